#include "core/editor/CommandTable.h"
#include "core/app/Texts.h"
#include "core/editor/DhtmlCommands.h"
#include "core/editor/SyntaxScheme.h"

#include <QSet>
#include <gtest/gtest.h>

using namespace quillora;
using namespace quillora::editor;

namespace {

TEST(CommandTable, IdentifiersAreUniqueAndCaseSensitive) {
    QSet<QString> seen;
    for (const Command& c : commands()) {
        EXPECT_FALSE(seen.contains(QString::fromLatin1(c.id))) << c.id;
        seen.insert(QString::fromLatin1(c.id));
    }
    EXPECT_TRUE(find(u"cmdBold").has_value());
    EXPECT_FALSE(find(u"cmdbold").has_value());
    EXPECT_FALSE(find(u"cdmShowBorder").has_value());
    EXPECT_EQ(find(u"cmdSubRem_42")->action, Action::Unsubscribe);
}

TEST(CommandTable, DispatchOrderAsTheCommandsStand) {
    const auto all = commands();
    ASSERT_GE(all.size(), 90u);
    EXPECT_STREQ(all.front().id, "cmdCheckSpam");
    EXPECT_STREQ(all[1].id, "cmdNewMess");
    EXPECT_STREQ(all.back().id, "cmdStatusTbMessaggio");
    const auto index = [&](const char* id) {
        for (size_t i = 0; i < all.size(); ++i)
            if (QLatin1String(all[i].id) == QLatin1String(id))
                return int(i);
        return -1;
    };
    EXPECT_LT(index("cmdTable"), index("cmdVarRgs"));
    EXPECT_LT(index("cmdVarOra3"), index("cmdAudio"));
    EXPECT_LT(index("cmdVarEmail"), index("cmdVarCampo1"));
}

TEST(CommandTable, OnlyUndoRedoCutPasteMarkTheMessage) {
    QStringList marking;
    for (const Command& c : commands())
        if (c.marksModified)
            marking << QString::fromLatin1(c.id);
    EXPECT_EQ(marking, QStringList({"cmdUndo", "cmdRedo", "cmdTaglia", "cmdIncolla"}));
    EXPECT_EQ(find(u"cmdCopia")->decmd, DECMD_COPY);
    EXPECT_EQ(find(u"cmdSelezionaTutto")->decmd, DECMD_SELECTALL);
    EXPECT_EQ(find(u"cmdTrova")->decmd, DECMD_FINDTEXT);
}

TEST(CommandTable, SnippetsAreExact) {
    const auto text = [](const char16_t* id) { return QString::fromUtf8(find(id)->text); };
    EXPECT_EQ(text(u"cmdModuliForm"), R"(<form name="form1" method="get" action=""></form>)");
    EXPECT_EQ(text(u"cmdModuliText"), R"(<input name="text1" type="text" value="" SIZE="20">)");
    EXPECT_EQ(text(u"cmdModuliTextArea"),
              R"(<textarea name="textarea1" COLS="40" ROWS="6"></textarea>)");
    EXPECT_EQ(
        text(u"cmdModuliList"),
        R"(<select name="select1" SIZE="6"><option value="1">valore1</option><option value="2">valore2</option></select>)");
    EXPECT_EQ(text(u"cmdModuliHidden"), R"(<input type="hidden" name="hiddenField1">)");
    EXPECT_EQ(text(u"cmdHR"), "<hr>");
    EXPECT_EQ(
        text(u"cmdTable"),
        R"(<table width="100%" border="0" cellspacing="2" cellpadding="0"><tr><td>Cella1</td><td>Cella2</td><td>Cella3</td></tr></table>)");
    int snippets = 0;
    for (const Command& c : commands())
        snippets += c.action == Action::Snippet;
    EXPECT_EQ(snippets, 10);
}

TEST(CommandTable, LowerCaseMergeTokensOfTheWholeTable) {
    const auto fields = mergeFields();
    // 13 named fields, 9 user fields, 3 dates, 3 times.
    EXPECT_EQ(fields.size(), 28u);
    QSet<QString> tokens;
    for (const MergeField& f : fields) {
        const QString t = QString::fromLatin1(f.token);
        EXPECT_TRUE(t.startsWith(":::") && t.endsWith(":::")) << f.token;
        EXPECT_EQ(t, t.toLower());
        EXPECT_FALSE(t.contains(' '));
        tokens.insert(t);
        EXPECT_EQ(find(QString::fromLatin1(f.command))->text, f.token);
    }
    EXPECT_EQ(tokens.size(), 28);
    EXPECT_TRUE(tokens.contains(":::codfis:::"));
    EXPECT_TRUE(tokens.contains(":::campo9:::"));
}

TEST(TagPath, SixteenLevelsOutermostFirst) {
    EXPECT_EQ(CleanCrLf(QString("a\r\nb\nc\rd")), "abcd");
    EXPECT_EQ(joinTagPath({"<TD>", "<TR>", "<TBODY>", "<TABLE>", "<BODY>"}),
              "<BODY><TABLE><TBODY><TR><TD>");
    QStringList deep;
    for (int i = 0; i < 20; ++i)
        deep << QString("<D%1>").arg(i);
    const QString path = joinTagPath(deep);
    EXPECT_TRUE(path.startsWith("<D15>"));
    EXPECT_TRUE(path.endsWith("<D0>"));
    EXPECT_EQ(path.count('<'), 16);

    const TagBar cell = tagBarFor("<HTML><BODY><TABLE><TBODY><TR><TD>");
    EXPECT_EQ(cell.tags, "TAG: <HTML><BODY><TABLE><TBODY><TR>");
    EXPECT_EQ(cell.last, "<TD>");
    const TagBar empty = tagBarFor("");
    EXPECT_EQ(empty.tags, "TAG: ");
    EXPECT_EQ(empty.last, "");
    EXPECT_EQ(GetLastElement(u"no tags"), "");
}

TEST(StatusTexts, ModeAndHighlight) {
    EXPECT_EQ(modeText("Preview"), "Mod. Preview");
    EXPECT_EQ(highlightText("&Save && close"), "Save  close");
}

TEST(SyntaxScheme, ReadsTheHtmlSectionOnly) {
    const SyntaxScheme s =
        parseSyntaxScheme({"[CSS]", "Tag.........: #111111", "[HTML]", "Tag.........: #0550ae",
                           "Comment: #6E7781", "Value.......: blue", "Garbage line",
                           "Tag.........: #222222", "[Other]", "Paper: #FFFFFF"});
    EXPECT_EQ(s.colour("Tag", "x"), "#222222");
    EXPECT_EQ(s.colour("Comment", "x"), "#6E7781");
    EXPECT_EQ(s.colour("Value", "#000000"), "#000000");
    EXPECT_EQ(s.colour("Paper", "none"), "none");
}

TEST(SyntaxScheme, ShippedSchemeColoursEveryStyle) {
    const SyntaxScheme s = loadSyntaxScheme(QUILLORA_SOURCE_DIR "/data/defaults/SyntaxEdit.dll");
    for (const char* name : {"Default", "Tag", "Attribute", "Value", "Comment", "Paper"})
        EXPECT_TRUE(s.colours.contains(name)) << name;
}

TEST(Texts, BuiltInInEveryLanguage) {
    for (const char* lang : {"Italiano", "English", "Español"}) {
        const Texts t = Texts::builtIn(QString::fromUtf8(lang));
        for (const char* key : {"MessSalva1", "MessSalva2", "NonDisponibile", "Attenzione"})
            EXPECT_FALSE(t.get(key).isEmpty()) << lang << " " << key;
    }
    EXPECT_NE(Texts::builtIn("Italiano").get("NonDisponibile"),
              Texts::builtIn("English").get("NonDisponibile"));
    EXPECT_EQ(Texts::builtIn("Deutsch").get("MessSalva1"),
              Texts::builtIn("English").get("MessSalva1"));
}

} // namespace
