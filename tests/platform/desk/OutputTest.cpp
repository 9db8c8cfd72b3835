// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/StandardOutputWriter.h"
#include "platform/linux/SyslogLog.h"
#include "tests/support/PrintQt.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

namespace zofra {
namespace {

TEST(SyslogLog, writesOneHarmlessLine) {
    std::vector<QByteArray> lines;
    SyslogLog log([&](const QByteArray& line) { lines.push_back(line); });
    log.log(QString::fromUtf8("[Sonos] Küche\nforged %s"));
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0], QByteArray("[Sonos] Küche\\nforged %s"));
}

TEST(SyslogLog, cutsALongLine) {
    QByteArray line;
    SyslogLog log([&](const QByteArray& text) { line = text; });
    log.log(QString(1'000'000, u'a'));
    EXPECT_EQ(QString::fromUtf8(line), QString(SyslogLog::maxLineLength - 1, u'a') + QChar(0x2026));
    log.log(QString(1'000'000, u'\n'));
    EXPECT_EQ(QString::fromUtf8(line).size(), SyslogLog::maxLineLength);
}

TEST(SyslogLog, needsNoLogToBeThere) {
    const auto logOnce = [] {
        SyslogLog log;
        log.log(QStringLiteral("a test of zofrazofra"));
        std::_Exit(0);
    };
    EXPECT_EXIT(logOnce(), testing::ExitedWithCode(0), "^$");
}

class Pipe {
public:
    Pipe() { EXPECT_EQ(pipe2(m_ends.data(), O_CLOEXEC | O_NONBLOCK), 0); }
    ~Pipe() {
        closeReader();
        close(writer());
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;
    [[nodiscard]] int writer() const { return m_ends[1]; }
    void closeReader() {
        if (m_ends[0] >= 0)
            close(std::exchange(m_ends[0], -1));
    }
    /// All there is.
    [[nodiscard]] QByteArray read() const {
        QByteArray result;
        std::array<char, 4096> buffer{};
        while (true) {
            const auto count = ::read(m_ends[0], buffer.data(), buffer.size());
            if (count <= 0)
                return result;
            result.append(buffer.data(), count);
        }
    }

private:
    std::array<int, 2> m_ends{-1, -1};
};

TEST(StandardOutputWriter, writesEachLineAtOnce) {
    const Pipe pipe;
    StandardOutputWriter output(pipe.writer());
    output.writeLine(QString::fromUtf8("Zofra: Küche"));
    EXPECT_EQ(pipe.read(), QByteArray("Zofra: Küche\n"));
    output.writeLine(QStringLiteral("two\nlines"));
    EXPECT_EQ(pipe.read(), QByteArray("two\\nlines\n"));
    output.writeLine(QString());
    EXPECT_EQ(pipe.read(), QByteArray("\n"));
}

TEST(StandardOutputWriter, doesNotWaitForAReader) {
    const Pipe pipe;
    StandardOutputWriter output(pipe.writer());
    const QString line(999, u'x');
    // Far more than a pipe holds, less than is kept.
    for (int i = 0; i < 200; ++i)
        output.writeLine(line);
    auto all = pipe.read();
    EXPECT_LT(all.size(), 200 * 1000);
    output.writeLine(QStringLiteral("last"));
    all += pipe.read();
    while (!all.endsWith("last\n")) {
        output.writeLine(QStringLiteral("more"));
        const auto next = pipe.read();
        ASSERT_FALSE(next.isEmpty());
        all += next;
        if (all.contains("last\n"))
            break;
    }
    EXPECT_EQ(all.count(QByteArray(999, 'x') + "\n"), 200) << "nothing was lost and nothing torn";
}

TEST(StandardOutputWriter, saysHowManyLinesItHadToDrop) {
    const Pipe pipe;
    StandardOutputWriter output(pipe.writer());
    const QString line(999, u'x');
    for (int i = 0; i < 1000; ++i)
        output.writeLine(line);
    auto all = pipe.read();
    for (int i = 0; i < 100 && !all.contains("after"); ++i) {
        output.writeLine(QStringLiteral("after"));
        all += pipe.read();
    }
    const auto note = all.indexOf(" lines were not written: nobody was reading)\n");
    ASSERT_GT(note, 0);
    const auto open = all.lastIndexOf('(', note);
    const auto kept = all.count(QByteArray(999, 'x') + "\n");
    EXPECT_EQ(kept + all.mid(open + 1, note - open - 1).toInt(), 1000);
    EXPECT_LT(note, all.indexOf("after"));
}

/// Writes twice to `descriptor` in a process of its own and ends it well.
[[noreturn]] void writeTwice(int descriptor) {
    prepareStandardStreams();
    {
        StandardOutputWriter output(descriptor);
        output.writeLine(QStringLiteral("to nobody"));
        output.writeLine(QStringLiteral("to nobody"));
    }
    std::_Exit(0);
}

TEST(StandardOutputWriter, outlivesItsReader) {
    Pipe pipe;
    pipe.closeReader();
    EXPECT_EXIT(writeTwice(pipe.writer()), testing::ExitedWithCode(0), "^$");
}

TEST(StandardOutputWriter, outlivesAClosedStream) {
    EXPECT_EXIT(writeTwice(-1), testing::ExitedWithCode(0), "^$");
}

TEST(StandardOutputWriter, outlivesAFullDisk) {
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    ASSERT_GE(full, 0);
    EXPECT_EXIT(writeTwice(full), testing::ExitedWithCode(0), "^$");
    close(full);
}

TEST(StandardStreams, areThereEvenWhenTheProgramIsStartedWithoutThem) {
    const auto child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        std::signal(SIGPIPE, SIG_DFL);
        close(0);
        close(1);
        close(2);
        prepareStandardStreams();
        const int next = open("/dev/null", O_RDONLY | O_CLOEXEC);
        struct sigaction action {};
        sigaction(SIGPIPE, nullptr, &action);
        // A file opened now must not become the standard output.
        const bool isFine = next > 2 && write(1, "x", 1) == 1 && action.sa_handler == SIG_IGN;
        _exit(isFine ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
}

} // namespace
} // namespace zofra
