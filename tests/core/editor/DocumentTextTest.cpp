#include "core/editor/DocumentText.h"

#include <gtest/gtest.h>

using namespace quillora::editor;

namespace {

using Kind = TopLevelNode::Kind;

TEST(DocumentText, DoctypeRebuiltFromItsDomValues) {
    EXPECT_EQ(doctypeText({QStringLiteral("html"), {}, {}}), QStringLiteral("<!DOCTYPE html>"));
    EXPECT_EQ(doctypeText({QStringLiteral("html"), QStringLiteral("-//W3C//DTD HTML 4.01//EN"),
                           QStringLiteral("http://www.w3.org/TR/html4/strict.dtd")}),
              QStringLiteral("<!DOCTYPE html PUBLIC \"-//W3C//DTD HTML 4.01//EN\" "
                             "\"http://www.w3.org/TR/html4/strict.dtd\">"));
    EXPECT_EQ(doctypeText({QStringLiteral("html"), {}, QStringLiteral("about:legacy-compat")}),
              QStringLiteral("<!DOCTYPE html SYSTEM \"about:legacy-compat\">"));
    // A double quote inside an identifier can only have been written between single quotes.
    EXPECT_EQ(doctypeText({QStringLiteral("html"), QStringLiteral("a\"b"), {}}),
              QStringLiteral("<!DOCTYPE html PUBLIC 'a\"b'>"));
}

TEST(DocumentText, SourceDoctypeIsFoundAfterBomBlanksAndComments) {
    const auto s = sourceDoctype(
        u"\uFEFF \r\n<!-- saved by hand -->\n<!DocType HTML Public '-//X//EN'\r\n\t\"y.dtd\" >\r\n"
        u"<html>");
    ASSERT_TRUE(s.has_value());
    EXPECT_EQ(s->text, QStringLiteral("<!DocType HTML Public '-//X//EN'\r\n\t\"y.dtd\" >"));
    EXPECT_EQ(s->trailingSpace, QStringLiteral("\r\n"));
    EXPECT_EQ(s->doctype, (Doctype{QStringLiteral("html"), QStringLiteral("-//X//EN"),
                                   QStringLiteral("y.dtd")}));
    EXPECT_FALSE(sourceDoctype(u"<html><!DOCTYPE html>").has_value());
    EXPECT_FALSE(sourceDoctype(u"").has_value());
}

TEST(DocumentText, ComposeKeepsTheWrittenDoctypeOnlyWhileItMatches) {
    const auto source = sourceDoctype(u"<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.01//EN\"\r\n"
                                      u"    \"http://www.w3.org/TR/html4/strict.dtd\">\r\n<html>");
    const TopLevelNode strict{Kind::Doctype,
                              {},
                              {QStringLiteral("html"), QStringLiteral("-//W3C//DTD HTML 4.01//EN"),
                               QStringLiteral("http://www.w3.org/TR/html4/strict.dtd")}};
    const TopLevelNode html{Kind::Element, QStringLiteral("<html></html>"), {}};
    const TopLevelNode note{Kind::Comment, QStringLiteral(" note "), {}};
    EXPECT_EQ(composeDocument({strict, html}, source),
              QStringLiteral("<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.01//EN\"\r\n"
                             "    \"http://www.w3.org/TR/html4/strict.dtd\">\r\n<html></html>"));
    // Another document's doctype is rebuilt, not borrowed from the source.
    const TopLevelNode html5{Kind::Doctype, {}, {QStringLiteral("html"), {}, {}}};
    EXPECT_EQ(composeDocument({html5, note, html}, source),
              QStringLiteral("<!DOCTYPE html>\r\n<!-- note -->\r\n<html></html>"));
    EXPECT_EQ(composeDocument({html}, std::nullopt), QStringLiteral("<html></html>"));
}

} // namespace
