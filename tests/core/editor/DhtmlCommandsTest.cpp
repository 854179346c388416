#include "core/editor/DhtmlCommands.h"
#include "core/editor/CommandTable.h"

#include <QFile>
#include <QSet>
#include <QString>
#include <QStringList>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

using namespace quillora;

namespace quillora {
// Rows print by code, so their test names stay the same from one build to the next.
void PrintTo(const DhtmlCommand& c, std::ostream* os) {
    *os << c.code;
}
} // namespace quillora

namespace {

QString bridgeSource(const QString& relative) {
    QFile f(QStringLiteral(QUILLORA_SOURCE_DIR "/src/gui/resources/bridge/") + relative);
    return f.open(QIODevice::ReadOnly) ? QString::fromUtf8(f.readAll()) : QString();
}

// The editing commands of document.execCommand, as the page's editing engine names them.
const QSet<QString>& pageCommandNames() {
    static const QSet<QString> names = [] {
        const QStringList all =
            QStringLiteral("backColor bold copy createLink cut delete fontName fontSize foreColor "
                           "formatBlock hiliteColor indent insertHTML insertImage "
                           "insertOrderedList insertText insertUnorderedList italic justifyCenter "
                           "justifyFull justifyLeft justifyRight outdent paste redo removeFormat "
                           "selectAll strikeThrough subscript superscript underline undo unlink")
                .split(u' ');
        return QSet<QString>(all.begin(), all.end());
    }();
    return names;
}

const char* actionName(PageAction a) {
    switch (a) {
    case PageAction::Undo:
        return "undo";
    case PageAction::Redo:
        return "redo";
    case PageAction::Cut:
        return "cut";
    case PageAction::Copy:
        return "copy";
    case PageAction::Paste:
        return "paste";
    case PageAction::SelectAll:
        return "selectAll";
    }
    return "";
}

class DhtmlCommandRow : public testing::TestWithParam<DhtmlCommand> {};

TEST_P(DhtmlCommandRow, IsTheOnlyRowOfItsCode) {
    const auto rows = dhtmlCommands();
    EXPECT_EQ(std::count_if(rows.begin(), rows.end(),
                            [](const DhtmlCommand& c) { return c.code == GetParam().code; }),
              1);
}

TEST_P(DhtmlCommandRow, NamesWhatThePageUnderstands) {
    const DhtmlCommand& c = GetParam();
    const QString name = QString::fromLatin1(c.name);
    EXPECT_EQ(c.argument != nullptr, c.kind == DhtmlKind::BridgeOperation);
    EXPECT_EQ(c.promptTitle != nullptr && c.promptLabel != nullptr,
              c.kind == DhtmlKind::CommandWithAddress);
    switch (c.kind) {
    case DhtmlKind::PageAction:
        // The arming operation waits for the effect of the action it is told about by name.
        EXPECT_STREQ(c.name, actionName(c.action));
        EXPECT_TRUE(bridgeSource(QStringLiteral("ops/armAction.js")).contains(name + u':'));
        break;
    case DhtmlKind::BridgeOperation: {
        const QString source = bridgeSource(QStringLiteral("ops/%1.js").arg(name));
        EXPECT_TRUE(source.contains(QStringLiteral("quillora.define('%1'").arg(name)));
        EXPECT_TRUE(
            source.contains(QStringLiteral("case '%1'").arg(QString::fromLatin1(c.argument))));
        break;
    }
    case DhtmlKind::Command:
    case DhtmlKind::CommandWithText:
    case DhtmlKind::CommandWithColour:
    case DhtmlKind::CommandWithAddress:
        EXPECT_TRUE(pageCommandNames().contains(name));
        break;
    case DhtmlKind::StateQuery:
        EXPECT_TRUE(bridgeSource(QStringLiteral("ops/editorState.js"))
                        .contains(QStringLiteral("value('%1')").arg(name)));
        break;
    case DhtmlKind::FindText:
        EXPECT_EQ(c.name, nullptr);
        break;
    }
}

INSTANTIATE_TEST_SUITE_P(DhtmlCommands, DhtmlCommandRow,
                         testing::ValuesIn(dhtmlCommands().begin(), dhtmlCommands().end()),
                         [](const testing::TestParamInfo<DhtmlCommand>& info) {
                             std::string n = "Code" + std::to_string(info.param.code);
                             if (info.param.argument)
                                 n += std::string("_") + info.param.argument;
                             else if (info.param.name)
                                 n += std::string("_") + info.param.name;
                             return n;
                         });

TEST(DhtmlCommands, EveryCodeTheEditorSendsToThePageHasOneRow) {
    QList<int> sent;
    for (const editor::Command& c : editor::commands()) {
        if (c.decmd != 0)
            sent << c.decmd;
    }
    // The colour picker reads the caret's colour and sets a new one.
    sent << DECMD_GETFORECOLOR << DECMD_SETFORECOLOR;
    ASSERT_GE(sent.size(), 27);
    for (int code : sent)
        EXPECT_NE(findDhtmlCommand(code), nullptr) << code;
    EXPECT_EQ(findDhtmlCommand(0), nullptr);
    EXPECT_EQ(findDhtmlCommand(5001), nullptr);
}

} // namespace
