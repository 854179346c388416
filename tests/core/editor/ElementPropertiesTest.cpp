#include "core/editor/ElementProperties.h"
#include "core/editor/UnsubscribeLink.h"

#include <gtest/gtest.h>

using namespace quillora::editor;

namespace {

// Captions, attributes and buttons of a tag's rows as one line each: "Caption=attr".
QStringList rowsOf(const char* tag) {
    QStringList out;
    for (const PropertyRow& r : propertyRows(QString::fromLatin1(tag))) {
        QString line = QString::fromLatin1(r.caption) + u'=' + QString::fromLatin1(r.attribute);
        if (r.fileButtons)
            line += QStringLiteral(" [...|Edit]");
        if (!r.choices.empty()) {
            QStringList values;
            for (const char* c : r.choices)
                values << QString::fromLatin1(c);
            line += QStringLiteral(" {") + values.join(u',') + u'}';
        }
        out << line;
    }
    return out;
}

TEST(ElementProperties, ImageRowsInOrder) {
    EXPECT_EQ(
        rowsOf("IMG"),
        QStringList({"ID=id", "Class=class", "Image=src [...|Edit]", "Width=width", "Height=height",
                     "Hor. space=hspace", "Ver. space=vspace", "Border=border",
                     "Align=align {absbottom,absmiddle,baseline,bottom,left,middle,right,"
                     "texttop,top}",
                     "Title=title", "Alt=alt"}));
}

TEST(ElementProperties, CellDiffersFromTableOnlyInHorizontalAlignment) {
    const QStringList table = rowsOf("TABLE");
    const QStringList cell = rowsOf("TD");
    ASSERT_EQ(table.size(), 11);
    ASSERT_EQ(cell.size(), table.size());
    EXPECT_EQ(table[2], "BG Image=background [...|Edit]");
    EXPECT_EQ(table[6], "Hor. align=align {center,left,right}");
    EXPECT_EQ(cell[6], "Hor. align=align {center,left,right,justify}");
    EXPECT_EQ(table[7], "Ver. align=vAlign {middle,top,bottom,baseline}");
    for (int i = 0; i < table.size(); ++i) {
        if (i != 6) {
            EXPECT_EQ(cell[i], table[i]) << i;
        }
    }
}

TEST(ElementProperties, InlineRowsAndGroups) {
    EXPECT_EQ(rowsOf("B"), QStringList({"ID=id", "Class=class", "Color=color", "Size=size",
                                        "Pointsize=pointsize", "Title=title"}));
    EXPECT_EQ(rowsOf("A"), QStringList({"ID=id", "Class=class", "Link=href", "Target=target",
                                        "Title=title", "Name=name"}));
    EXPECT_EQ(rowsOf("INPUT").mid(5),
              QStringList({"Max length=maxLength", "Align=align {center,left,right}", "Src=src",
                           "Disabled=disabled", "Checked=checked"}));
    EXPECT_EQ(rowsOf("BODY").size(), 15);
    EXPECT_EQ(tagGroup(u"IMG"), TagGroup::Control);
    EXPECT_EQ(tagGroup(u"SELECT"), TagGroup::Control);
    EXPECT_EQ(tagGroup(u"TD"), TagGroup::Text);
    EXPECT_EQ(tagGroup(u"OL"), TagGroup::Text);
    for (const char* none : {"H1", "TR", "UL", "img", ""}) {
        EXPECT_EQ(tagGroup(QString::fromLatin1(none)), TagGroup::None) << none;
        EXPECT_TRUE(rowsOf(none).isEmpty()) << none;
    }
}

struct ColourCase {
    const char* row;
    const char* html; // nullptr: refused
};

class ColourRow : public testing::TestWithParam<ColourCase> {};

TEST_P(ColourRow, BecomesHtmlColour) {
    const auto got = colourRowToHtml(QString::fromLatin1(GetParam().row));
    if (!GetParam().html) {
        EXPECT_FALSE(got.has_value()) << GetParam().row;
    } else {
        ASSERT_TRUE(got.has_value()) << GetParam().row;
        EXPECT_EQ(*got, QString::fromLatin1(GetParam().html));
    }
}

INSTANTIATE_TEST_SUITE_P(Rows, ColourRow,
                         testing::Values(ColourCase{"255;0;128", "#ff0080"},
                                         ColourCase{" 1; 2 ;3 ", "#010203"},
                                         ColourCase{"#AbCdEf", "#abcdef"}, ColourCase{"", ""},
                                         ColourCase{"256;0;0", nullptr}, ColourCase{"1;2", nullptr},
                                         ColourCase{"1;2;3;4", nullptr}, ColourCase{"red", nullptr},
                                         ColourCase{"-1;0;0", nullptr},
                                         ColourCase{"#12345", nullptr}));

TEST(ElementProperties, AttributeColourShownAsRow) {
    EXPECT_EQ(htmlToColourRow("#FF0080"), "255;0;128");
    EXPECT_EQ(htmlToColourRow("ff0080"), "255;0;128");
    EXPECT_EQ(htmlToColourRow("red"), "red");
    EXPECT_EQ(htmlToColourRow(""), "");
    EXPECT_EQ(*colourRowToHtml(htmlToColourRow("#0a0b0c")), "#0a0b0c");
}

TEST(ElementProperties, WritesGoThroughTheRightChannel) {
    using W = AttributeWrite::Kind;
    const auto is = [](const AttributeWrite& w, W kind, const char* name, const char* value) {
        return w.kind == kind && w.name == QLatin1String(name) && w.value == QLatin1String(value);
    };
    EXPECT_TRUE(is(attributeWrite(u"IMG", "width", "120"), W::Attribute, "width", "120"));
    EXPECT_TRUE(is(attributeWrite(u"IMG", "width", ""), W::Remove, "width", ""));
    EXPECT_TRUE(is(attributeWrite(u"TD", "class", "note"), W::TextProperty, "className", "note"));
    EXPECT_TRUE(is(attributeWrite(u"P", "id", ""), W::TextProperty, "id", ""));
    EXPECT_TRUE(
        is(attributeWrite(u"TD", "bgColor", "#ff0080"), W::Attribute, "bgColor", "#ff0080"));
    EXPECT_TRUE(
        is(attributeWrite(u"INPUT", "maxLength", "12"), W::NumberProperty, "maxLength", "12"));
    EXPECT_TRUE(
        is(attributeWrite(u"INPUT", "checked", "1"), W::BooleanProperty, "defaultChecked", "1"));
    EXPECT_TRUE(is(attributeWrite(u"SELECT", "disabled", ""), W::BooleanProperty, "disabled", ""));
    EXPECT_TRUE(is(attributeWrite(u"INPUT", "value", "Go"), W::Attribute, "value", "Go"));
    EXPECT_TRUE(is(attributeWrite(u"TEXTAREA", "disabled", "1"), W::Attribute, "disabled", ""));
}

TEST(ElementProperties, ClassesComeOnlyFromSelectorsThatStartWithADot) {
    EXPECT_EQ(classNamesFromSelectors({"p.note", ".note", "td", ".big", ".note", "."}),
              QStringList({"note", "big"}));
    EXPECT_TRUE(classNamesFromSelectors({"p.note"}).isEmpty());
}

struct LinkCase {
    const char* language;
    const char* sentence;
};

class UnsubscribeLinkText : public testing::TestWithParam<LinkCase> {};

TEST_P(UnsubscribeLinkText, IsBuiltByteForByte) {
    const QString language = QString::fromUtf8(GetParam().language);
    EXPECT_EQ(unsubscribeLink("news&co@example.com", language),
              QStringLiteral("<a href=\"mailto:news&co@example.com?subject=REMOVE\">") +
                  QString::fromUtf8(GetParam().sentence) + "</a>");
}

INSTANTIATE_TEST_SUITE_P(
    Languages, UnsubscribeLinkText,
    testing::Values(LinkCase{"Italiano", "Per cancellarti dalla mailing list clicca qui."},
                    LinkCase{"English", "To unsubscribe click here."},
                    LinkCase{"Español", "Para anular su suscripción, haga clic aquí."},
                    LinkCase{"Deutsch", "Per cancellarti dalla mailing list clicca qui."},
                    LinkCase{"", "Per cancellarti dalla mailing list clicca qui."}));

TEST(UnsubscribeCommand, CarriesTheAccount) {
    EXPECT_EQ(unsubscribeCommand(3), "cmdSubRem_3");
    EXPECT_EQ(accountOfCommand("cmdSubRem_3"), 3);
    EXPECT_EQ(accountOfCommand("cmdSubRem_"), std::nullopt);
    EXPECT_EQ(accountOfCommand("cmdSubRem_x"), std::nullopt);
    EXPECT_EQ(accountOfCommand("cmdBold"), std::nullopt);
}

} // namespace
