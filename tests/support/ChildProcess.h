// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>
#include <QProcess>
#include <QString>
#include <QStringList>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace zofra::test {

/// A QProcess that forks as everybody does. By default the child runs in its parent's memory until it becomes
/// the program, and ThreadSanitizer, which does not expect that, would see no lock of this thread any more.
class ChildProcess final : public QProcess {
public:
    ChildProcess() {
        setChildProcessModifier([] {});
    }
};

/// Starts a program; its process, or -1 where it could not be started. What it says goes to the end of the
/// file `output`, where one is named. To be preferred where other threads run: a process with threads that
/// forks is more than ThreadSanitizer bears.
inline pid_t spawnProgram(const QString& program, const QStringList& arguments, const QString& output = {}) {
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
    if (!output.isEmpty()) {
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.toLocal8Bit().constData(),
                                         O_WRONLY | O_CREAT | O_APPEND, 0600);
        posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    }
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

/// Runs a program to its end; its exit status, or -1 where it could not be run.
inline int runProgram(const QString& program, const QStringList& arguments) {
    const pid_t child = spawnProgram(program, arguments);
    return child > 0 ? waitForProgram(child) : -1;
}

} // namespace zofra::test
