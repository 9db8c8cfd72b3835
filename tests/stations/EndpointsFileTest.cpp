// SPDX-License-Identifier: GPL-3.0-or-later
#include "stations/EndpointsFile.h"

#include "tests/support/PrintQt.h"

#include <gtest/gtest.h>

namespace zofra::endpoints {
namespace {

/// "section/key=value@line" for each entry, headers as "[section]@line"; a mistake as "line: reason".
QStringList read(const QByteArray& bytes) {
    const auto parsed = parse(bytes);
    if (!parsed)
        return {QString::number(parsed.error().line) + QStringLiteral(": ") + parsed.error().reason};
    QStringList lines;
    for (const auto& entry : *parsed) {
        lines += (entry.kind == Entry::Kind::sectionHeader
                      ? u'[' + entry.section + u']'
                      : entry.section + u'/' + entry.key + u'=' + entry.value) +
                 u'@' + QString::number(entry.line);
    }
    return lines;
}

QStringList lines(std::initializer_list<const char*> texts) {
    QStringList result;
    for (const auto* text : texts)
        result += QString::fromUtf8(text);
    return result;
}

TEST(EndpointsFileTest, isReadLineByLine) {
    EXPECT_EQ(read("[streams]\nzofra_aac=a.test\n zofra_mp3 = b.test:80 \n\n[metadata]\non_air=c"),
              lines({"[streams]@1", "streams/zofra_aac=a.test@2", "streams/zofra_mp3=b.test:80@3",
                     "[metadata]@5", "metadata/on_air=c@6"}));
    EXPECT_EQ(read(""), QStringList());
    EXPECT_EQ(read("\n\n"), QStringList());
}

TEST(EndpointsFileTest, leavesCommentsOut) {
    EXPECT_EQ(read("; all\n# of\n[a]   ; it\nk=v ; w\nl=x\t# y\nm=a;b\nn=a#b\n"),
              lines({"[a]@3", "a/k=v@4", "a/l=x@5", "a/m=a;b@6", "a/n=a#b@7"}));
}

TEST(EndpointsFileTest, mayComeFromAnotherEditor) {
    EXPECT_EQ(read("\xEF\xBB\xBF[a]\r\nk=v\r\n"), lines({"[a]@1", "a/k=v@2"}));
}

TEST(EndpointsFileTest, takesNothingApartInValues) {
    EXPECT_EQ(read("[a]\nk=a,b%20=c \"d\"\n"), lines({"[a]@1", "a/k=a,b%20=c \"d\"@2"}));
}

TEST(EndpointsFileTest, isRefusedWhenItsFormIsWrong) {
    EXPECT_EQ(read("k=v\n"), lines({"1: stands before the first section"}));
    EXPECT_EQ(read("[a\nk=v\n"), lines({"1: is a section without its closing bracket"}));
    EXPECT_EQ(read("[ ]\nk=v\n"), lines({"1: is a section without a name"}));
    EXPECT_EQ(read("[a]\n\njust text\n"), lines({"3: is neither a section nor key=value"}));
    EXPECT_EQ(read(QByteArray("[a]\nk=\0v\n", 9)), lines({"0: is no text file"}));
    EXPECT_EQ(read("[a]\nk=\xFF\xFE\n"), lines({"0: is not UTF-8 text"}));
    EXPECT_EQ(read(QByteArray(maxFileBytes + 1, '\n')), lines({"0: is larger than 64 KiB"}));
    EXPECT_EQ(read(QByteArray(maxFileBytes, '\n')), QStringList());
}

TEST(EndpointsFileTest, acceptsHosts) {
    for (const auto* value : {"a", "streams.zofra.example", "localhost:8443", "127.0.0.1", "10.1.2.3:1",
                              "a.b:65535", "[::1]", "[fd00::1]:8443", "[2001:db8::1]",
                              "xn--bcher-kva.example", "a_b.example", "0.0.0.0", "n08a-eu.rcs.revma.com"})
        EXPECT_EQ(mistakeInHost(QString::fromUtf8(value)), std::nullopt) << value;
}

TEST(EndpointsFileTest, refusesWhatIsNoHost) {
    const std::vector<std::pair<const char*, const char*>> expected{
        {"", "is empty"},
        {"https://a.test", "must be host or host:port, without scheme or path"},
        {"a.test/x", "must be host or host:port, without scheme or path"},
        {"a.test:", "has a port that is not 1 to 65535"},
        {"a.test:0", "has a port that is not 1 to 65535"},
        {"a.test:65536", "has a port that is not 1 to 65535"},
        {"a.test:99999999999", "has a port that is not 1 to 65535"},
        {"a.test:+80", "has a port that is not 1 to 65535"},
        {"a.test:080", "has a port that is not 1 to 65535"},
        {"a.test:http", "has a port that is not 1 to 65535"},
        {":80", "has no host"},
        {"fd00::1", "is an IPv6 address without brackets"},
        {"[fd00::1", "has no closing bracket"},
        {"[fd00::1]8080", "has text after its closing bracket"},
        {"[fd00::1]:0", "has a port that is not 1 to 65535"},
        {"[zz::1]", "is no IPv6 address"},
        {"[1::2::3]", "is no IPv6 address"},
        {"[]", "is no IPv6 address"},
        {"[fe80::1%eth0]", "is no IPv6 address"},
        {"256.1.1.1", "is no IPv4 address"},
        {"1.2.3", "is no IPv4 address"},
        {"1.2.3.4.5", "is no IPv4 address"},
        {"1.2.3.4.", "is no IPv4 address"},
        {"a..b", "is no host name"},
        {".a", "is no host name"},
        {"-a.test", "is no host name"},
        {"a b", "is no host name"},
        {"user@a.test", "is no host name"},
        {"a.test?x", "is no host name"},
        {"\"a.test\"", "is no host name"},
        {"b\xC3\xBC"
         "cher.example",
         "is no host name"},
    };
    for (const auto& [value, reason] : expected)
        EXPECT_EQ(mistakeInHost(QString::fromUtf8(value)), QString::fromUtf8(reason)) << value;
    EXPECT_EQ(mistakeInHost(QStringLiteral("a.").repeated(130) + u'a'),
              QStringLiteral("is longer than a host name can be"));
    EXPECT_EQ(mistakeInHost(QStringLiteral("a").repeated(64)), QStringLiteral("is no host name"));
    EXPECT_EQ(mistakeInHost(QStringLiteral("a").repeated(63)), std::nullopt);
}

} // namespace
} // namespace zofra::endpoints
