// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/linux/StandardOutputWriter.h"
#include "platform/linux/SyslogLog.h"
#include "tests/support/PrintQt.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

namespace zofra {
namespace {

/// A system log that takes lines when it is asked to.
class LogDaemon {
public:
    LogDaemon() { start(); }
    ~LogDaemon() { stop(); }
    LogDaemon(const LogDaemon&) = delete;
    LogDaemon& operator=(const LogDaemon&) = delete;
    void start() {
        sockaddr_un address{.sun_family = AF_UNIX, .sun_path = {}};
        std::copy(m_path.begin(), m_path.end(), address.sun_path);
        m_socket = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
        EXPECT_EQ(bind(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    }
    void stop() const {
        close(m_socket);
        unlink(m_path.constData());
    }
    [[nodiscard]] QByteArray path() const { return m_path; }
    /// The next line, without what stands before the text; empty when there is none.
    [[nodiscard]] QByteArray take() const {
        QByteArray datagram(65'536, '\0');
        const auto size = recv(m_socket, datagram.data(), static_cast<std::size_t>(datagram.size()), 0);
        const auto line = QString::fromUtf8(datagram.left(std::max<qsizetype>(size, 0)));
        static const QRegularExpression form(
            QStringLiteral("\\A<13>[A-Z][a-z]{2} [ \\d]\\d \\d\\d:\\d\\d:\\d\\d zofrazofra\\[%1\\]: (.*)\\z")
                .arg(getpid()));
        return form.match(line).captured(1).toUtf8();
    }

private:
    QTemporaryDir m_folder;
    QByteArray m_path = QFile::encodeName(m_folder.filePath(QStringLiteral("log")));
    int m_socket = -1;
};

TEST(SyslogLogTest, writesOneHarmlessLine) {
    const LogDaemon daemon;
    SyslogLog log(daemon.path());
    log.log(QString::fromUtf8("[Sonos] Küche\nforged %s"));
    EXPECT_EQ(daemon.take(), QByteArray("[Sonos] Küche\\nforged %s"));
    EXPECT_EQ(daemon.take(), QByteArray());
}

TEST(SyslogLogTest, cutsALongLine) {
    const LogDaemon daemon;
    SyslogLog log(daemon.path());
    log.log(QString(1'000'000, u'a'));
    EXPECT_EQ(QString::fromUtf8(daemon.take()), QString(SyslogLog::maxLineLength - 1, u'a') + QChar(0x2026));
    log.log(QString(1'000'000, u'\n'));
    EXPECT_EQ(QString::fromUtf8(daemon.take()).size(), SyslogLog::maxLineLength);
}

TEST(SyslogLogTest, waitsForNoDaemonAndSaysWhatItLeftOut) {
    const LogDaemon daemon;
    SyslogLog log(daemon.path());
    // More than any queue of the kernel holds, and less than the burst that is allowed.
    int sent = 0;
    for (; sent < 400; ++sent)
        log.log(QString::number(sent) + QString(1900, u'x'));
    int kept = 0;
    while (!daemon.take().isEmpty())
        ++kept;
    log.log(QStringLiteral("after"));
    const auto note = daemon.take();
    if (kept == sent)
        GTEST_SKIP() << "skipped: this kernel keeps so many lines for a daemon that hangs";
    EXPECT_EQ(note, "(" + QByteArray::number(sent - kept) +
                        " lines were left out: too many at once, or nobody was reading)");
    EXPECT_EQ(daemon.take(), "after");
}

TEST(SyslogLogTest, findsADaemonThatWasStartedAnew) {
    LogDaemon daemon;
    SyslogLog log(daemon.path());
    log.log(QStringLiteral("one"));
    EXPECT_EQ(daemon.take(), "one");
    daemon.stop();
    log.log(QStringLiteral("two"));
    daemon.start();
    log.log(QStringLiteral("three"));
    EXPECT_TRUE(daemon.take().startsWith("(1 lines were left out"));
    EXPECT_EQ(daemon.take(), "three");
}

TEST(SyslogLogTest, needsNoLogToBeThere) {
    SyslogLog log("/nowhere/log");
    log.log(QStringLiteral("a test of zofrazofra"));
    SyslogLog tooLong(QByteArray(500, '/'));
    tooLong.log(QStringLiteral("a test of zofrazofra"));
}

TEST(LineLimitTest, letsABurstPassAndThenSoManyASecond) {
    LineLimit limit;
    const auto start = LineLimit::Clock::now() + std::chrono::hours(1);
    int passed = 0;
    for (int i = 0; i < 1000; ++i)
        passed += limit.takes(start) ? 1 : 0;
    EXPECT_EQ(passed, LineLimit::atOnce);
    EXPECT_TRUE(limit.note().startsWith("(500 lines were left out"));
    limit.told();
    EXPECT_EQ(limit.note(), QByteArray());
    for (int i = 0; i < 1000; ++i)
        passed += limit.takes(start + std::chrono::seconds(2)) ? 1 : 0;
    EXPECT_EQ(passed, LineLimit::atOnce + 2 * LineLimit::perSecond);
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

TEST(StandardOutputWriterTest, writesEachLineAtOnce) {
    const Pipe pipe;
    StandardOutputWriter output(pipe.writer());
    output.writeLine(QString::fromUtf8("Zofra: Küche"));
    EXPECT_EQ(pipe.read(), QByteArray("Zofra: Küche\n"));
    output.writeLine(QStringLiteral("two\nlines"));
    EXPECT_EQ(pipe.read(), QByteArray("two\\nlines\n"));
    output.writeLine(QString());
    EXPECT_EQ(pipe.read(), QByteArray("\n"));
}

TEST(StandardOutputWriterTest, doesNotWaitForAReader) {
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

TEST(StandardOutputWriterTest, saysHowManyLinesItHadToDrop) {
    const Pipe pipe;
    StandardOutputWriter output(pipe.writer());
    const QString line(999, u'x');
    for (int i = 0; i < 450; ++i)
        output.writeLine(line);
    auto all = pipe.read();
    for (int i = 0; i < 20 && !all.contains("after"); ++i) {
        output.writeLine(QStringLiteral("after"));
        all += pipe.read();
    }
    const auto note = all.indexOf(" lines were left out: too many at once, or nobody was reading)\n");
    ASSERT_GT(note, 0);
    const auto open = all.lastIndexOf('(', note);
    const auto kept = all.count(QByteArray(999, 'x') + "\n");
    EXPECT_EQ(kept + all.mid(open + 1, note - open - 1).toInt(), 450);
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

TEST(StandardOutputWriterTest, outlivesItsReader) {
    Pipe pipe;
    pipe.closeReader();
    EXPECT_EXIT(writeTwice(pipe.writer()), testing::ExitedWithCode(0), "^$");
}

TEST(StandardOutputWriterTest, outlivesAClosedStream) {
    EXPECT_EXIT(writeTwice(-1), testing::ExitedWithCode(0), "^$");
}

TEST(StandardOutputWriterTest, outlivesAFullDisk) {
    const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
    ASSERT_GE(full, 0);
    EXPECT_EXIT(writeTwice(full), testing::ExitedWithCode(0), "^$");
    close(full);
}

TEST(StandardStreamsTest, makeNobodyWaitWhoWritesToThem) {
    const Pipe pipe;
    // The writer's end waits, as a shell's does.
    ASSERT_EQ(fcntl(pipe.writer(), F_SETFL, 0), 0);
    const auto child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        alarm(30);
        dup2(pipe.writer(), STDERR_FILENO);
        neverWaitForReaders();
        const QByteArray line(1000, 'x');
        // Ten times what the pipe holds, as a library would write it.
        for (int i = 0; i < 655; ++i)
            std::fprintf(stderr, "%s\n", line.constData());
        _exit(0);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_EQ(fcntl(pipe.writer(), F_GETFL) & O_NONBLOCK, 0) << "the others wait as before";
}

TEST(StandardStreamsTest, areThereEvenWhenTheProgramIsStartedWithoutThem) {
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
