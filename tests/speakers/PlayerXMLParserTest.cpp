// SPDX-License-Identifier: GPL-3.0-or-later
#include "speakers/PlayerXMLParser.h"

#include "tests/support/PrintQt.h"

#include <gtest/gtest.h>

namespace zofra {
namespace {

PlayerXMLNode::Pointer parse(const char* text) {
    return NetworkPlayerProtocol::xml(QString::fromUtf8(text));
}

QString names(const std::vector<PlayerXMLNode::Pointer>& nodes) {
    QString result;
    for (const auto& node : nodes)
        result += node->attributes.value(QStringLiteral("n"));
    return result;
}

TEST(PlayerXMLParserTest, GivesLocalNamesAttributesAndText) {
    const auto root =
        parse("<a:r xmlns:a='urn:a' x='1' a:y='2'>one<c/>two &lt;&#65;&gt;<!-- no --> 3 </a:r>");
    ASSERT_TRUE(root);
    EXPECT_EQ(root->name, QStringLiteral("r"));
    EXPECT_EQ(root->attributes.value(QStringLiteral("x")), QStringLiteral("1"));
    EXPECT_EQ(root->attributes.value(QStringLiteral("a:y")), QStringLiteral("2"));
    EXPECT_EQ(root->text, QStringLiteral("onetwo <A> 3 "));
    ASSERT_EQ(root->children.size(), 1U);
    EXPECT_EQ(root->children.front()->name, QStringLiteral("c"));
}

TEST(PlayerXMLParserTest, TextOfChildrenIsNotTheParents) {
    const auto root = parse("<r>a<c>b</c>c</r>");
    ASSERT_TRUE(root);
    EXPECT_EQ(root->text, QStringLiteral("ac"));
    EXPECT_EQ(root->child(QStringLiteral("c"))->text, QStringLiteral("b"));
}

TEST(PlayerXMLParserTest, WhiteSpaceIsKept) {
    EXPECT_EQ(parse("<r>\n  <c/>\t</r>")->text, QStringLiteral("\n  \t"));
}

TEST(PlayerXMLParserTest, CdataIsText) {
    EXPECT_EQ(parse("<r>a<![CDATA[<b>&amp;]]>c</r>")->text, QStringLiteral("a<b>&amp;c"));
}

TEST(PlayerXMLParserTest, EscapedMarkupCanBeParsedAgain) {
    const auto inner = NetworkPlayerProtocol::xml(parse("<r>&lt;i a=&quot;&amp;amp;&quot;/&gt;</r>")->text);
    ASSERT_TRUE(inner);
    EXPECT_EQ(inner->attributes.value(QStringLiteral("a")), QStringLiteral("&"));
}

TEST(PlayerXMLParserTest, ChildIsTheFirstOfExactlyThatName) {
    const auto root = parse("<r><x><c n='0'/></x><C n='1'/><c n='2'/><c n='3'/></r>");
    EXPECT_EQ(root->child(QStringLiteral("c"))->attributes.value(QStringLiteral("n")), QStringLiteral("2"));
    EXPECT_FALSE(root->child(QStringLiteral("nothing")));
}

TEST(PlayerXMLParserTest, DescendantsComeInDocumentOrderWithoutTheNodeItself) {
    const auto root = parse("<c n='0'><x><c n='1'><c n='2'/></c></x><C n='9'/><c n='3'/></c>");
    EXPECT_EQ(names(root->descendants(QStringLiteral("c"))), QStringLiteral("123"));
    EXPECT_TRUE(root->descendants(QStringLiteral("nothing")).empty());
}

TEST(PlayerXMLParserTest, MalformedTextIsNothing) {
    for (const auto* text : {"",
                             " ",
                             "text",
                             "<r>",
                             "<r></s>",
                             "<r/><r/>",
                             "<r/>text",
                             "<r a=1/>",
                             "<r a='1' a='2'/>",
                             "<r>&undeclared;</r>",
                             "<r>&</r>",
                             "<p:r/>",
                             "<r\xC3",
                             "<r><![CDATA[x</r>",
                             "<r><!-- </r>",
                             "<?xml version='1.0'",
                             "<r>\x01</r>",
                             "<>",
                             "< r/>",
                             "<r a='<'/>"})
        EXPECT_FALSE(parse(text)) << text;
}

TEST(PlayerXMLParserTest, VersionOneOneIsReadLikeOneZero) {
    for (const auto* version : {"version=\"1.0\"", "version=\"1.1\"", "\n version = '1.1' encoding='utf-8'"})
        EXPECT_TRUE(NetworkPlayerProtocol::xml(QStringLiteral("<?xml ") + QLatin1String(version) +
                                               QStringLiteral("?><a/>")))
            << version;
    for (const auto* version : {"version=\"1.1'", "version=1.1"})
        EXPECT_FALSE(NetworkPlayerProtocol::xml(QStringLiteral("<?xml ") + QLatin1String(version) +
                                                QStringLiteral("?><a/>")))
            << version;
}

TEST(PlayerXMLParserTest, DocumentTypesAreRefusedHoweverWritten) {
    for (const auto* text :
         {"<!DOCTYPE r><r/>", "<!doctype r><r/>", "<!DocType r [<!ENTITY e 'x'>]><r>&e;</r>",
          "<?xml version='1.0'?>\n<!DOCTYPE r SYSTEM 'http://h/'><r/>", "<r><!-- <!DOCTYPE --></r>",
          "<r><![CDATA[<!doctype]]></r>", "<! DOCTYPE r><r/>", "<!ENTITY e 'x'><r/>", "<!ELEMENT r ANY><r/>"})
        EXPECT_FALSE(parse(text)) << text;
}

TEST(PlayerXMLParserTest, ADeclaredEncodingHidesNothing) {
    // In UTF-7 the same bytes spell a document type.
    EXPECT_FALSE(parse("<?xml version='1.0' encoding='UTF-7'?>+ADwAIQ-DOCTYPE r+AD4-<r/>"));
    // The text is text already, whatever it was once encoded in.
    const auto root = parse("<?xml version='1.0' encoding='ISO-8859-1'?><r>Küche</r>");
    ASSERT_TRUE(root);
    EXPECT_EQ(root->text, QStringLiteral("Küche"));
    const auto wide = QByteArray("<\0!\0D\0O\0C\0T\0Y\0P\0E\0 \0r\0>\0<\0r\0/\0>\0", 32);
    EXPECT_FALSE(NetworkPlayerProtocol::xml(QString::fromUtf8(wide)));
}

QString nested(int depth) {
    return QStringLiteral("<a>").repeated(depth) + QStringLiteral("</a>").repeated(depth);
}

TEST(PlayerXMLLimitsTest, DepthIsBounded) {
    EXPECT_TRUE(NetworkPlayerProtocol::xml(nested(64)));
    EXPECT_FALSE(NetworkPlayerProtocol::xml(nested(65)));
    EXPECT_FALSE(NetworkPlayerProtocol::xml(nested(100'000)));
    EXPECT_FALSE(NetworkPlayerProtocol::xml(QStringLiteral("<a>").repeated(100'000)));
}

QString withAttributes(int count) {
    QString text = QStringLiteral("<r");
    for (int i = 0; i < count; ++i)
        text += QStringLiteral(" a%1='='").arg(i);
    return text + QStringLiteral("/>");
}

TEST(PlayerXMLLimitsTest, AttributesAreBounded) {
    EXPECT_TRUE(NetworkPlayerProtocol::xml(withAttributes(256)));
    EXPECT_FALSE(NetworkPlayerProtocol::xml(withAttributes(257)));
}

TEST(PlayerXMLLimitsTest, ElementsAreBounded) {
    const auto one = QStringLiteral("<a/>");
    EXPECT_TRUE(
        NetworkPlayerProtocol::xml(QStringLiteral("<r>") + one.repeated(19'999) + QStringLiteral("</r>")));
    EXPECT_FALSE(
        NetworkPlayerProtocol::xml(QStringLiteral("<r>") + one.repeated(20'000) + QStringLiteral("</r>")));
}

TEST(PlayerXMLLimitsTest, TextIsBounded) {
    const QString text(1024 * 1024 - 7, u'x');
    EXPECT_TRUE(NetworkPlayerProtocol::xml(QStringLiteral("<r>") + text + QStringLiteral("</r>")));
    EXPECT_FALSE(NetworkPlayerProtocol::xml(QStringLiteral("<r>x") + text + QStringLiteral("</r>")));
}

TEST(PlayerXMLParserTest, MarkupInsideOfTextIsText) {
    for (const auto* text :
         {"<r a='>' b=\"'\">a = b > c</r>", "<r><!-- <a = ' & --></r>", "<r><![CDATA[<a ' & ]]></r>",
          "<?pi a = ' & ?><r/>", "<r a = '1' />", "<r\n\ta='&amp;'\n/>", "<r>&#x10FFFF;</r>"})
        EXPECT_TRUE(parse(text)) << text;
}

TEST(PlayerXMLParserTest, KeepsTheLastOfSeveralRoots) {
    PlayerXMLParser parser;
    parser.charactersFound(u"ignored");
    (void)parser.elementStarted(QStringLiteral("a"), {});
    parser.elementEnded();
    (void)parser.elementStarted(QStringLiteral("b"), {});
    parser.cdataFound("x\xFFy");
    parser.elementEnded();
    parser.elementEnded();
    parser.charactersFound(u"ignored");
    ASSERT_TRUE(parser.root);
    EXPECT_EQ(parser.root->name, QStringLiteral("b"));
    EXPECT_EQ(parser.root->text, QStringLiteral("x\uFFFDy"));
    EXPECT_TRUE(parser.stack.empty());
}

TEST(PlayerXMLNodeTest, ADeepTreeIsWalkedAndTakenApartWithoutRecursion) {
    auto root = std::make_shared<PlayerXMLNode>(QStringLiteral("a"), QMap<QString, QString>());
    auto deepest = root;
    for (int i = 0; i < 1'000'000; ++i) {
        auto child = std::make_shared<PlayerXMLNode>(QStringLiteral("a"), QMap<QString, QString>());
        deepest->children.push_back(child);
        deepest = std::move(child);
    }
    EXPECT_EQ(root->descendants(QStringLiteral("a")).size(), 1'000'000U);
    const std::weak_ptr<PlayerXMLNode> last = deepest;
    deepest.reset();
    root.reset();
    EXPECT_TRUE(last.expired());
}

TEST(PlayerXMLNodeTest, ASearchGoesNoFurtherThanItsVisits) {
    const auto root = parse("<r><c n='1'/><x/><c n='2'/><x/><c n='3'/></r>");
    std::size_t visits = 8;
    EXPECT_EQ(names(root->descendants(QStringLiteral("c"), visits)), QStringLiteral("123"));
    EXPECT_EQ(visits, 3U);
    EXPECT_EQ(names(root->descendants(QStringLiteral("c"), visits)), QStringLiteral("12"));
    EXPECT_EQ(visits, 0U);
}

TEST(PlayerXMLNodeTest, ASharedPartOutlivesItsTree) {
    auto root = parse("<r><a><b n='1'/></a></r>");
    const auto kept = root->child(QStringLiteral("a"));
    root.reset();
    EXPECT_EQ(names(kept->descendants(QStringLiteral("b"))), QStringLiteral("1"));
}

} // namespace
} // namespace zofra
