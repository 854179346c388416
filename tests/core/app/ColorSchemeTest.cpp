#include "core/TestFiles.h"
#include "core/app/TextFile.h"
#include "core/app/bColorStyle.h"
#include "core/app/bError.h"
#include "core/app/bFunctions.h"

#include <QHash>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <algorithm>

using namespace quillora;
using namespace quillora::bColorStyle;

namespace {

const QString kDefaults = QStringLiteral(QUILLORA_SOURCE_DIR "/data/defaults/");

QString line(Colour c, const QString& value) {
    return KeyText(c) + value;
}

class SchemeFileTest : public testing::Test {
protected:
    QString choice() const { return dir.filePath("colorSchema2.dll"); }
    QString schemes() const { return dir.filePath("colorSchema3.dll"); }
    void writeChoice(const QStringList& lines) const {
        ASSERT_TRUE(TextFile::writeLines(choice(), lines));
    }
    void writeSchemes(const QStringList& lines) const {
        ASSERT_TRUE(TextFile::writeLines(schemes(), lines));
    }
    QString read(ColorScheme& scheme) const { return LeggiColorStyle(choice(), schemes(), scheme); }
    QTemporaryDir dir;
};

TEST_F(SchemeFileTest, OnlyTheChosenSectionIsRead) {
    writeChoice({"[Schema]", "Dark"});
    writeSchemes({line(Colour::CLR_WORKSPACE, "1"), // before any section
                  "[Light]", line(Colour::CLR_WORKSPACE, "10"), line(Colour::CLR_BORDER, "11"),
                  "[Dark]", line(Colour::CLR_WORKSPACE, "20"), line(Colour::CLR_MENU_HEAD, "21"),
                  "[Blue]", line(Colour::CLR_BORDER, "30"), line(Colour::CLR_MENU_HEAD, "31")});
    ColorScheme scheme;
    EXPECT_EQ(read(scheme), "Dark");
    ColorScheme expected;
    expected.CLR_WORKSPACE = 20;
    expected.CLR_MENU_HEAD = 21;
    EXPECT_EQ(scheme, expected);
}

TEST(SchemeChoice, TheLastCompletePairNamesTheScheme) {
    EXPECT_EQ(SchemeChoice({"[Schema]", "Light", "[Schema]", "Dark"}), "Dark");
    // A lone last line has no partner: the pair before it counts.
    EXPECT_EQ(SchemeChoice({"[Schema]", "Light", "Dark"}), "Light");
    EXPECT_EQ(SchemeChoice({"Light"}), "");
    EXPECT_EQ(SchemeChoice({}), "");
}

TEST_F(SchemeFileTest, ARepeatedKeyKeepsTheLaterValueAndARepeatedHeaderReopens) {
    writeChoice({"x", "Mine"});
    writeSchemes({"[Mine]", line(Colour::CLR_BORDER, "5"), line(Colour::CLR_BORDER, "6"), "[Other]",
                  line(Colour::CLR_BORDER, "7"), line(Colour::CLR_MENU_HEAD, "8"), "[Mine]",
                  line(Colour::CLR_MENU_HEAD, "9")});
    ColorScheme scheme;
    read(scheme);
    EXPECT_EQ(scheme.CLR_BORDER, 6);
    EXPECT_EQ(scheme.CLR_MENU_HEAD, 9);
}

TEST_F(SchemeFileTest, KeysAreThirtyCharactersAndValuesAreLenient) {
    const QStringList lines = {
        "[S]",
        line(Colour::CLR_WORKSPACE, "  &HFF  "),        // hexadecimal, blanks around
        line(Colour::CLR_BARSMENU, "12abc"),            // the leading number
        line(Colour::CLR_BARSMENU_BACK, "1 2 3"),       // blanks inside are ignored
        line(Colour::CLR_SFONDO_FINESTRA, "2.5"),       // rounds half to even
        line(Colour::CLR_TESTO_FINESTRA, "3.5"),        //
        line(Colour::CLR_HIGHLIGHT_BORDER, "-1"),       // all bits set
        line(Colour::CLR_HIGHLIGHT_TEXT, "4294967295"), // beyond 32 bits: kept as it was
        line(Colour::CLR_BORDER, "nothing"),            // not a number: 0
        "CLR_MENU_HEAD..............: 77",              // 29 characters: not a key
        "CLR_MENU_COMMAND............:88",              // the value must start at character 31
        "clr_rqd_backcolor...........: 99",             // keys are compared exactly
        "CLR_RQD_FORECOLOR...........: 16777215 ; comment",
        "CLR_UNKNOWN.................: 5",
    };
    ColorScheme scheme;
    scheme.CLR_HIGHLIGHT_TEXT = 42;
    scheme.CLR_BORDER = 42;
    scheme.CLR_MENU_HEAD = 42;
    scheme.CLR_MENU_COMMAND = 42;
    scheme.CLR_RQD_BACKCOLOR = 42;
    ApplySchemeSection(lines, "S", scheme);
    EXPECT_EQ(scheme.CLR_WORKSPACE, 255);
    EXPECT_EQ(scheme.CLR_BARSMENU, 12);
    EXPECT_EQ(scheme.CLR_BARSMENU_BACK, 123);
    EXPECT_EQ(scheme.CLR_SFONDO_FINESTRA, 2);
    EXPECT_EQ(scheme.CLR_TESTO_FINESTRA, 4);
    EXPECT_EQ(scheme.CLR_HIGHLIGHT_BORDER, -1);
    EXPECT_EQ(scheme.CLR_HIGHLIGHT_TEXT, 42);
    EXPECT_EQ(scheme.CLR_BORDER, 0);
    EXPECT_EQ(scheme.CLR_MENU_HEAD, 42);
    EXPECT_EQ(scheme.CLR_MENU_COMMAND, 42);
    EXPECT_EQ(scheme.CLR_RQD_BACKCOLOR, 42);
    EXPECT_EQ(scheme.CLR_RQD_FORECOLOR, 16777215);
}

TEST_F(SchemeFileTest, FilesInAnyAcceptedEncodingAreRead) {
    writeBytes(choice(), "[Schema]\nCaff\xe8\n"); // Windows-1252, LF only
    writeBytes(schemes(), "\xef\xbb\xbf[Caff\xc3\xa8]\r\n" +
                              KeyText(Colour::CLR_BORDER).toLatin1() + "314\r\n");
    ColorScheme scheme;
    EXPECT_EQ(read(scheme), QStringLiteral("Caff\u00e8"));
    EXPECT_EQ(scheme.CLR_BORDER, 314);
}

TEST_F(SchemeFileTest, AMissingFileLeavesTheColoursAndIsLogged) {
    const QString log = dir.filePath("log.xt2");
    bError::setLogPath(log);
    ColorScheme before;
    before.CLR_BORDER = 7;
    before.CLR_MENU_COMMAND = 8;

    ColorScheme scheme = before;
    EXPECT_EQ(read(scheme), "");
    EXPECT_EQ(scheme, before);

    writeChoice({"[Schema]", "Dark"});
    EXPECT_EQ(read(scheme), "Dark");
    EXPECT_EQ(scheme, before);
    // Read quietly (the window's early look before it loads), the same failure leaves no line.
    EXPECT_EQ(LeggiColorStyle(choice(), schemes(), scheme, ReadFailure::Quiet), "Dark");
    EXPECT_EQ(scheme, before);

    // A program that never read a scheme has black everywhere.
    ColorScheme fresh;
    for (Colour c : AllColours())
        EXPECT_EQ(fresh.value(c), 0) << ColourName(c).toStdString();

    QStringList lines;
    ASSERT_TRUE(TextFile::readLines(log, lines).ok());
    bError::setLogPath(QString());
    ASSERT_EQ(lines.size(), 2);
    EXPECT_TRUE(lines[0].startsWith("Function: bColorStyle.LeggiColorStyle >> Passo: 0 >> 53: "));
    EXPECT_TRUE(lines[0].endsWith("colorSchema2.dll"));
    EXPECT_TRUE(lines[1].endsWith("colorSchema3.dll"));
}

TEST(ColourRules, HeadingLabelsTakeTheCommandColourAndCountersKeepTheirs) {
    ColorScheme scheme;
    scheme.CLR_TESTO_FINESTRA = 0x111111;
    scheme.CLR_MENU_COMMAND = 0x222222;
    // The foreground a label ends with: its designed one unless a rule sets another.
    auto foreground = [&](const char* name) {
        qint32 fore = 0x999999;
        for (const Setting& s : SettingsFor(u"Label", QString::fromLatin1(name))) {
            if (s.property == Property::ForeColor)
                fore = scheme.value(s.colour);
        }
        return fore;
    };
    EXPECT_EQ(foreground("lblOggetto"), 0x222222);
    EXPECT_EQ(foreground("lblAllegati"), 0x222222);
    EXPECT_EQ(foreground("lblCredito"), 0x999999);
    EXPECT_EQ(foreground("txtConsPrev"), 0x999999);
    EXPECT_EQ(foreground("lblTags"), 0x111111);
    EXPECT_EQ(foreground("lbloggetto"), 0x111111); // names are compared exactly
    // Every label shows what lies behind it, the counters included.
    for (const char* name : {"lblOggetto", "lblCredito", "lblTags"})
        EXPECT_EQ(SettingsFor(u"Label", QString::fromLatin1(name)).value(0).property,
                  Property::Transparent);
}

TEST(ColourRules, NameDependentSettingsAndTheirOrder) {
    using S = Setting;
    EXPECT_EQ(SettingsFor(u"Line", u"LnUp"),
              (QList<S>{{Property::BorderColor, Colour::CLR_WORKSPACE}}));
    EXPECT_TRUE(SettingsFor(u"Line", u"LnDown").isEmpty());
    EXPECT_EQ(SettingsFor(u"Rectangle", u"rctDW"),
              (QList<S>{{Property::BorderColor, Colour::CLR_BORDER},
                        {Property::GradientColor1, Colour::CLR_BARSMENU},
                        {Property::GradientColor2, Colour::CLR_BARSMENU},
                        {Property::BackColor, Colour::CLR_RQD_BACKCOLOR}}));
    EXPECT_EQ(SettingsFor(u"Rectangle", u"rctOther").size(), 2);
    EXPECT_EQ(SettingsFor(u"TreeView", u"").size(), 4);
    EXPECT_EQ(SettingsFor(u"PushButton", u"cmdOK"),
              (QList<S>{{Property::BackColor, Colour::CLR_BUTTON_BACKCOLOR},
                        {Property::ForeColor, Colour::CLR_BUTTON_FORECOLOR}}));
}

TEST(ColourRules, TypesLeftAloneAndUnknownTypesGetNothing) {
    for (const char* type : {"DateTimePicker", "TabControl", "DHTMLEdit", "PropertyGrid",
                             "DockStudio", "Image", "Frobnicator", "label", ""})
        EXPECT_TRUE(SettingsFor(QString::fromLatin1(type), u"cmdHelp").isEmpty()) << type;
    // Named by the rules all the same, so a caller can tell "left alone" from "unknown".
    EXPECT_TRUE(RuleTypes().contains("TabControl"));
    EXPECT_TRUE(RuleTypes().contains("DockStudio"));
    EXPECT_FALSE(RuleTypes().contains("Frobnicator"));
}

TEST(Contrast, LuminanceReadsRedFromTheLowestByte) {
    EXPECT_NEAR(RelativeLuminance(0x0000FF), 0.2126, 1e-4); // red
    EXPECT_NEAR(RelativeLuminance(0x00FF00), 0.7152, 1e-4); // green
    EXPECT_NEAR(RelativeLuminance(0xFF0000), 0.0722, 1e-4); // blue
    EXPECT_DOUBLE_EQ(ContrastRatio(0, 0xFFFFFF), 21.0);
    EXPECT_DOUBLE_EQ(ContrastRatio(0xFFFFFF, 0), 21.0);
    EXPECT_DOUBLE_EQ(ContrastRatio(0x123456, 0x123456), 1.0);
    // The usual borderline grey: #777777 on white just fails, #767676 just passes.
    EXPECT_LT(ContrastRatio(bFunctions::HTMLtoRGB("#777777"), 0xFFFFFF), kMinimumTextContrast);
    EXPECT_GE(ContrastRatio(bFunctions::HTMLtoRGB("#767676"), 0xFFFFFF), kMinimumTextContrast);
    // Bits above the colour (a negative value) do not count.
    EXPECT_DOUBLE_EQ(RelativeLuminance(-1), 1.0);
}

TEST(Contrast, PairsCoverEveryControlThatWritesText) {
    const QList<ContrastPair> pairs = ContrastPairs(u"Dark");
    auto has = [&](Colour fore, Colour back) {
        return std::any_of(pairs.begin(), pairs.end(), [&](const ContrastPair& p) {
            return p.fore == fore && p.back == back && p.minimum >= kMinimumTextContrast;
        });
    };
    EXPECT_TRUE(has(Colour::CLR_MENU_COMMAND, Colour::CLR_BARSMENU_BACK));
    EXPECT_TRUE(has(Colour::CLR_TESTO_FINESTRA, Colour::CLR_SFONDO_FINESTRA));
    EXPECT_TRUE(has(Colour::CLR_TESTO_FINESTRA, Colour::CLR_BARSMENU)); // a label on a bar
    EXPECT_TRUE(has(Colour::CLR_GRID_FORECOLOR, Colour::CLR_GRID_BACKCOLOR));
    EXPECT_TRUE(has(Colour::CLR_BUTTON_FORECOLOR, Colour::CLR_BUTTON_BACKCOLOR));
    EXPECT_TRUE(has(Colour::CLR_HIGHLIGHT_TEXT, Colour::CLR_HIGHLIGHT_BORDER));
    EXPECT_TRUE(has(Colour::CLR_MENU_COMMAND, Colour::CLR_BARSMENU));
    EXPECT_TRUE(has(Colour::CLR_MENU_COMMAND, Colour::CLR_MENU_HEAD));
    EXPECT_TRUE(has(Colour::CLR_RQD_FORECOLOR, Colour::CLR_RQD_BACKCOLOR));
    EXPECT_TRUE(has(Colour::CLR_MENU_COMMAND, Colour::CLR_DOCK_BACKCOLOR));
}

// The schemes we ship are the ones most users see: each must be complete and readable.
QStringList shippedLines() {
    QStringList lines;
    TextFile::readLines(kDefaults + kSchemeFileName, lines);
    return lines;
}

TEST(ShippedColourSchemes, TheChoiceNamesAShippedSchemeAndLightAndDarkAreThere) {
    const QStringList lines = shippedLines();
    const QStringList names = SchemeNames(lines);
    EXPECT_TRUE(names.contains("Light"));
    EXPECT_TRUE(names.contains("Dark"));
    ColorScheme scheme;
    const QString chosen =
        LeggiColorStyle(kDefaults + kChoiceFileName, kDefaults + kSchemeFileName, scheme);
    EXPECT_TRUE(names.contains(chosen)) << chosen.toStdString();
    // Every line of the file is a header or a key of exactly 30 characters and a decimal, and
    // every section has one line per colour (none twice, none before the first header).
    static const QRegularExpression colourLine(QStringLiteral("^CLR_[A-Z_]+\\.+: -?\\d+$"));
    QHash<QString, qsizetype> keysIn;
    QString section;
    for (const QString& l : lines) {
        if (l.startsWith(u'[')) {
            section = l;
            continue;
        }
        ++keysIn[section];
        EXPECT_TRUE(colourLine.match(l).hasMatch()) << l.toStdString();
        EXPECT_EQ(l.indexOf(u':'), kKeyWidth - 2) << l.toStdString();
    }
    for (auto it = keysIn.cbegin(); it != keysIn.cend(); ++it)
        EXPECT_EQ(it.value(), AllColours().size()) << it.key().toStdString();
}

class ShippedScheme : public testing::TestWithParam<QString> {};

TEST_P(ShippedScheme, SetsAllNineteenColoursAndEveryTextIsReadable) {
    const QString name = GetParam();
    constexpr qint32 kUnset = 0x7F123456; // no colour value: the top byte is never used
    ColorScheme scheme;
    for (Colour c : AllColours())
        scheme.set(c, kUnset);
    ApplySchemeSection(shippedLines(), name, scheme);
    for (Colour c : AllColours())
        EXPECT_NE(scheme.value(c), kUnset)
            << name.toStdString() << " lacks " << ColourName(c).toStdString();

    for (const ContrastPair& p : ContrastPairs(name)) {
        const qint32 fore = scheme.value(p.fore);
        const qint32 back = scheme.value(p.back);
        EXPECT_GE(ContrastRatio(fore, back), p.minimum)
            << name.toStdString() << ": " << p.what.toStdString() << " ("
            << ColourName(p.fore).toStdString() << " " << bFunctions::RGBtoHTML(fore).toStdString()
            << " on " << ColourName(p.back).toStdString() << " "
            << bFunctions::RGBtoHTML(back).toStdString() << ")";
    }
}

INSTANTIATE_TEST_SUITE_P(Defaults, ShippedScheme, testing::ValuesIn(SchemeNames(shippedLines())),
                         [](const testing::TestParamInfo<QString>& info) {
                             QString n = info.param;
                             n.replace(QRegularExpression(QStringLiteral("[^A-Za-z0-9]")), "_");
                             return n.toStdString();
                         });

} // namespace
