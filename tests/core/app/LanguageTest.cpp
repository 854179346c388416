#include "core/TestFiles.h"
#include "core/app/LanguageKeys.h"
#include "core/app/TextFile.h"
#include "core/app/bLANG.h"
#include "core/editor/CommandTable.h"

#include <QHash>
#include <QSet>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace quillora;
using bLANG::TargetKind;

namespace {

const QString kShipped = QStringLiteral(QUILLORA_SOURCE_DIR "/data/LANG_Quillora.lng");
const QStringList kHeaders = {"[<LNG1>]Italiano", "[<LNG2>]English",
                              QString::fromUtf8("[<LNG3>]Español")};

struct Loaded {
    bLANG::LoadResult result;
    QList<std::pair<QString, QString>> calls; // in the order they came
    QHash<QString, QString> last;             // by key, the later line winning
    QList<std::pair<qint64, qint64>> progress;
};

Loaded load(const QString& file, const QString& language) {
    Loaded out;
    out.result = bLANG::LoadLanguages(
        file, language,
        [&](const QString& key, const QString& text) {
            out.calls.append({key, text});
            out.last.insert(key, text);
        },
        [&](qint64 at, qint64 max) {
            out.progress.append({at, max});
        });
    return out;
}

// A text line of three languages, closed by the fourth marker.
QString line(const QString& key, const QString& it, const QString& en, const QString& es) {
    return "[<NOME>]" + key + "[<LNG1>]" + it + "[<LNG2>]" + en + "[<LNG3>]" + es + "[<LNG4>]";
}

// Non-ASCII text and a line-break mark, which counts as written, not as the two characters it
// becomes.
QStringList progressLines() {
    return kHeaders +
           QStringList{"[<MDLO>]->bVAR",
                       line("Lingua", "Lingua", "Language**vbCrLf**Sprache", "Idioma"),
                       line("Attenzione", "Attenzione", QString::fromUtf8("Atención ünd €"),
                            QString::fromUtf8("Atención"))};
}

class LanguageFileTest : public testing::Test {
protected:
    QString write(const QStringList& lines) {
        EXPECT_TRUE(TextFile::writeLines(file(), lines));
        return file();
    }
    // The headers and one bVAR section holding the given lines.
    QString withMessages(const QStringList& lines) {
        return write(kHeaders + QStringList{"[<MDLO>]->bVAR"} + lines);
    }
    QString file() const { return dir.filePath("LANG_Quillora.lng"); }
    QTemporaryDir dir;
};

TEST_F(LanguageFileTest, EnglishGetsTheSecondTextOfEveryKey) {
    QStringList lines = kHeaders;
    QString section;
    for (const bLANG::LanguageKey& k : bLANG::keys()) {
        const QString window = QString::fromLatin1(k.target.window);
        if (window != section) {
            section = window;
            lines << (window == u"bVAR" ? "[<MDLO>]->" : "[<FORM>]->") + window;
        }
        lines << line(k.key.mid(window.size() + 1), "it " + k.key, "en " + k.key, "es " + k.key);
    }
    const Loaded got = load(write(lines), "English");
    EXPECT_EQ(got.result.LanguageCount, 3);
    EXPECT_EQ(got.result.CurrentLanguageIndex, 2);
    ASSERT_EQ(got.calls.size(), qsizetype(bLANG::keys().size()));
    for (const bLANG::LanguageKey& k : bLANG::keys())
        EXPECT_EQ(got.last.value(k.key), "en " + k.key) << k.key.toStdString();
}

TEST_F(LanguageFileTest, SelectionIsTheFirstLineTrimmedAndMatchedExactly) {
    const QString choice = dir.filePath("LANGz.lng");
    const QString lng = withMessages({line("Attenzione", "Attenzione", "Attention", "Atención")});

    ASSERT_TRUE(TextFile::writeLines(choice, {" English ", "Italiano"}));
    EXPECT_EQ(bLANG::SetVarCurrLanguage(choice), "English");
    EXPECT_EQ(bLANG::ControlloLingua(choice), "English");
    EXPECT_EQ(load(lng, bLANG::SetVarCurrLanguage(choice)).last.value("bVAR.Attenzione"),
              "Attention");

    ASSERT_TRUE(TextFile::writeLines(choice, {"english"}));
    const Loaded lower = load(lng, bLANG::SetVarCurrLanguage(choice));
    EXPECT_EQ(lower.result.CurrentLanguageIndex, 0);
    EXPECT_TRUE(lower.calls.isEmpty());
    EXPECT_FALSE(lower.progress.isEmpty()) << "the file is still read through";

    EXPECT_EQ(bLANG::SetVarCurrLanguage(dir.filePath("missing.lng")), QString());
    EXPECT_EQ(bLANG::ControlloLingua(dir.filePath("missing.lng")), QString());
}

// The text one key gets in one language, and that language's place among the headers.
struct KeyTextCase {
    const char* name;
    QStringList headers, messages; // the bVAR section follows the headers
    QString language, key, text;
    int languageIndex;
};

void PrintTo(const KeyTextCase& c, std::ostream* os) {
    *os << c.name;
}

class KeyText : public LanguageFileTest, public testing::WithParamInterface<KeyTextCase> {};

TEST_P(KeyText, IsTheTextOfTheLanguage) {
    const KeyTextCase& c = GetParam();
    const Loaded got =
        load(write(c.headers + QStringList{"[<MDLO>]->bVAR"} + c.messages), c.language);
    EXPECT_EQ(got.result.CurrentLanguageIndex, c.languageIndex);
    EXPECT_EQ(got.last.value(c.key), c.text);
}

const QString kEspanol = QString::fromUtf8("Español");
const QStringList kTwoEnglish = {"[<LNG1>]English", "[<LNG2>]Italiano", "[<LNG3>]English"};
const QStringList kJoined = {line("Attenzione", "uno[|]due", "two", "tres")};

INSTANTIATE_TEST_SUITE_P(LanguageFile, KeyText,
                         testing::Values(
                             // Of two equal headers, the later one is the language.
                             KeyTextCase{"later_of_two_equal_headers",
                                         kTwoEnglish,
                                         {line("Lingua", "one", "two", "three")},
                                         "English",
                                         "bVAR.Lingua",
                                         "three",
                                         3},
                             KeyTextCase{"line_break_mark_gives_two_lines",
                                         kHeaders,
                                         {line("MessSalva1", "a", "First**vbCrLf**second", "c")},
                                         "English",
                                         "bVAR.MessSalva1",
                                         "First\r\nsecond",
                                         2},
                             // A join mark inside a text shifts the languages that follow it.
                             KeyTextCase{"join_mark_first_part", kHeaders, kJoined, "Italiano",
                                         "bVAR.Attenzione", "uno", 1},
                             KeyTextCase{"join_mark_second_part_shifted", kHeaders, kJoined,
                                         "English", "bVAR.Attenzione", "due", 2},
                             KeyTextCase{"join_mark_shifts_the_next_language", kHeaders, kJoined,
                                         kEspanol, "bVAR.Attenzione", "two", 3}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(LanguageFileTest, OnlyKeysOfTheTableSpeltExactlyAreApplied) {
    const Loaded got = load(write(kHeaders +
                                  QStringList{
                                      line("Attenzione", "x", "before section", "z"),
                                      "[<MDLO>]->bVAR",
                                      line("NoSuchKey", "x", "unknown", "z"),
                                      line("attenzione", "x", "lower case", "z"),
                                      line("Attenzione ", "x", "trailing blank", "z"),
                                      "[<FORM>]->frmMain",
                                      line("Attenzione", "x", "wrong section", "z"),
                                      "[<FORM>]->frmMain ",
                                      line("Caption", "x", "section blank", "z"),
                                      "[<FORM>]  frmMain",
                                      line("Caption", "x", "any separator", "z"),
                                  }),
                            "English");
    ASSERT_EQ(got.calls.size(), 1);
    EXPECT_EQ(got.calls[0], std::make_pair(QString("frmMain.Caption"), QString("any separator")));
}

TEST_F(LanguageFileTest, MissingFileAppliesNothing) {
    const Loaded got = load(dir.filePath("nothing-here.lng"), "English");
    EXPECT_FALSE(got.result.read);
    EXPECT_EQ(got.result.CurrentLanguageIndex, 0);
    EXPECT_TRUE(got.calls.isEmpty());
    EXPECT_TRUE(got.progress.isEmpty());
}

TEST_F(LanguageFileTest, MisplacedMarkersSpoilOnlyTheirOwnLine) {
    const QString lng = withMessages({
        "[<NOME>]Lingua[<LNG1>]Lingua[<LNG3>]Idioma[<LNG2>]Language[<LNG4>]",
        "Attenzione[<LNG1>]no name mark[<LNG2>]x[<LNG3>]y[<LNG4>]",
        "[<LNG1>]a[<NOME>]Attenzione[<LNG2>]b[<LNG3>]c[<LNG4>]",
        line("MessSalva2", "Salvare?", "Save?", "¿Guardar?"),
    });
    const Loaded english = load(lng, "English");
    EXPECT_EQ(english.last.value("bVAR.Lingua"), "") << "its closing marker comes before it";
    EXPECT_FALSE(english.last.contains("bVAR.Attenzione"));
    EXPECT_EQ(english.last.value("bVAR.MessSalva2"), "Save?");

    const Loaded italian = load(lng, "Italiano");
    EXPECT_EQ(italian.last.value("bVAR.Lingua"), "Lingua[<LNG3>]Idioma");
    EXPECT_EQ(italian.last.value("bVAR.MessSalva2"), "Salvare?");
}

TEST_F(LanguageFileTest, ALaterLineForTheSameKeyWins) {
    const Loaded got = load(
        withMessages({line("Lingua", "a", "first", "c"), line("Attenzione", "a", "between", "c"),
                      line("Lingua", "a", "second", "c")}),
        "English");
    ASSERT_EQ(got.calls.size(), 3);
    EXPECT_EQ(got.calls[0].second, "first");
    EXPECT_EQ(got.last.value("bVAR.Lingua"), "second");
}

TEST_F(LanguageFileTest, ProgressFollowsTheBytesOfAUtf16File) {
    const QStringList lines = progressLines();
    const QByteArray bytes = readBytes(write(lines));
    const qint64 size = bytes.size();

    // After each line, the position is where the next line starts, the byte-order mark aside.
    QList<qint64> expected{0};
    for (qsizetype at = 2; (at = bytes.indexOf(QByteArray("\r\0\n\0", 4), at)) >= 0; at += 4)
        expected << at + 4 - 2;
    expected << size;

    const Loaded got = load(file(), "English");
    ASSERT_EQ(got.progress.size(), lines.size() + 2);
    for (qsizetype i = 0; i < got.progress.size(); ++i) {
        EXPECT_EQ(got.progress[i].first, expected[i]) << "report " << i;
        EXPECT_EQ(got.progress[i].second, size);
    }
}

TEST_F(LanguageFileTest, ProgressOfAUtf8FileNeverPassesItsSize) {
    const QByteArray bytes = progressLines().join("\r\n").toUtf8() + "\r\n";
    writeBytes(file(), bytes);
    const Loaded got = load(file(), "English");
    ASSERT_FALSE(got.progress.isEmpty());
    const qint64 size = bytes.size();
    qint64 before = 0;
    for (const auto& [at, max] : got.progress) {
        EXPECT_EQ(max, size);
        EXPECT_LE(at, max);
        EXPECT_GE(at, before);
        before = at;
    }
    EXPECT_EQ(got.progress.last().first, size);
    EXPECT_EQ(got.last.value("bVAR.Attenzione"), QString::fromUtf8("Atención ünd €"));
}

TEST(LanguageKeys, SpellTheKeysAsTheLanguageFilesDo) {
    for (const char* key : {R"(frmMain.Dks.Commands.GetToolButton("cmdBold").Caption)",
                            R"(frmMain.Dks.CommandBars("TbMain").NameLocal)",
                            "frmMain.Tbs.Item(0).ToolTip", "frmPropBody.lbl.Caption",
                            "frmSelAudio.lbl(0).Caption", "frmSelAudio.chkInfinito.caption",
                            R"(frmMain.Dks.Commands.GetPopupMenu("popTable").Caption)",
                            R"(frmMain.Dks.Commands.GetEdit("txtOggetto").Label)",
                            R"(frmMain.Dks.Commands.GetStatic("stcHelp").Text)",
                            R"(frmMain.Dks.DockWindows("dckAllegati").Caption)", "frmMain.Caption",
                            "bVAR.xxxCampo9", "bVAR.MessSalva1"}) {
        EXPECT_NE(bLANG::findKey(QString::fromLatin1(key)), nullptr) << key;
    }
    EXPECT_EQ(bLANG::findKey(u"frmSelAudio.chkInfinito.Caption"), nullptr);
    EXPECT_EQ(bLANG::findKey(u"bvar.MessSalva1"), nullptr);
}

TEST(LanguageKeys, EveryKeyIsListedOnce) {
    QSet<QString> seen;
    for (const bLANG::LanguageKey& k : bLANG::keys()) {
        EXPECT_FALSE(seen.contains(k.key)) << k.key.toStdString();
        seen << k.key;
    }
}

TEST(LanguageKeys, EveryCommandHasACaptionKey) {
    QSet<QString> captioned;
    for (const bLANG::LanguageKey& k : bLANG::keys()) {
        const auto& t = k.target;
        if (t.kind == TargetKind::MergeFieldCaption)
            captioned << QString::fromLatin1(t.command);
        else if (QLatin1String(t.window) == u"frmMain" &&
                 (t.kind == TargetKind::ToolButton || t.kind == TargetKind::ComboCaption))
            captioned << QString::fromLatin1(t.id);
    }
    for (const editor::Command& c : editor::commands())
        EXPECT_TRUE(captioned.contains(QString::fromLatin1(c.id))) << c.id;
}

class ShippedLanguageFile : public testing::TestWithParam<int> {};

TEST_P(ShippedLanguageFile, HoldsOneNonEmptyTextForEveryKey) {
    const int language = GetParam();
    const QString name = kHeaders[language - 1].mid(8);
    const Loaded got = load(kShipped, name);
    ASSERT_TRUE(got.result.read);
    EXPECT_EQ(got.result.LanguageCount, 3);
    ASSERT_EQ(got.result.CurrentLanguageIndex, language) << "headers in the order of the product";
    QHash<QString, int> lines;
    for (const auto& [key, text] : got.calls)
        ++lines[key];
    for (const bLANG::LanguageKey& k : bLANG::keys()) {
        EXPECT_FALSE(got.last.value(k.key).trimmed().isEmpty())
            << name.toStdString() << ": " << k.key.toStdString();
        EXPECT_LE(lines.value(k.key), 1) << "listed twice: " << k.key.toStdString();
    }
    // Non-ASCII letters survive the file's encoding.
    if (name == QString::fromUtf8("Español")) {
        EXPECT_EQ(got.last.value("bVAR.Attenzione"), QString::fromUtf8("Atención"));
    }
}

INSTANTIATE_TEST_SUITE_P(Languages, ShippedLanguageFile, testing::Values(1, 2, 3));

} // namespace
