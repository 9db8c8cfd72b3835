// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <csignal>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace zofra::test {

/// Where a program writes; by default where this one does.
struct ChildOutput {
    int output = STDOUT_FILENO;
    int errors = STDERR_FILENO;
};

/// Starts a program; its process, or -1 where it could not be started. Not a QProcess: a process with threads
/// that forks is more than ThreadSanitizer bears, it takes locks that everyone holds for free ones
/// afterwards.
inline pid_t spawnProgram(const QString& program, const QStringList& arguments, ChildOutput to = {}) {
    std::vector<QByteArray> texts{program.toLocal8Bit()};
    for (const auto& argument : arguments)
        texts.push_back(argument.toLocal8Bit());
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (auto& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, to.output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, to.errors, STDERR_FILENO);
    pid_t child = -1;
    const int error = posix_spawnp(&child, pointers.front(), &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    return error == 0 ? child : -1;
}

/// Waits for its end; its exit status, or -1 where it has none.
inline int waitForProgram(pid_t child) {
    int status = 0;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// Kills it, as a crash would, and waits for its end.
inline void killProgram(pid_t child) {
    ::kill(child, SIGKILL);
    waitForProgram(child);
}

/// Runs a program to its end; its exit status, or -1 where it could not be run.
inline int runProgram(const QString& program, const QStringList& arguments) {
    const pid_t child = spawnProgram(program, arguments);
    return child > 0 ? waitForProgram(child) : -1;
}

} // namespace zofra::test
