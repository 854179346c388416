#include "gui/editor/SourceView.h"

#include "core/editor/SyntaxScheme.h"
#include "gui/app/Dialogs.h"

#include <QFontDatabase>
#include <QKeyEvent>
#include <Qsci/qscicommand.h>
#include <Qsci/qscicommandset.h>
#include <Qsci/qscilexerhtml.h>

namespace quillora::gui {

SourceView::SourceView(QWidget* parent) : QsciScintilla(parent) {
    setObjectName(QStringLiteral("CODE"));
    setUtf8(true);
    setEolMode(QsciScintilla::EolWindows);
    setMarginType(0, QsciScintilla::NumberMargin);
    setMarginWidth(0, QStringLiteral("00000"));
    setFolding(QsciScintilla::BoxedTreeFoldStyle);
    setBraceMatching(QsciScintilla::SloppyBraceMatch);
    setWrapMode(QsciScintilla::WrapWord);
    setAutoIndent(true);
    setTabWidth(4);
    m_lexer = new QsciLexerHTML(this);
    // One fixed-pitch font for every kind of text: the lexer's own choices mix proportional
    // families (serif for text, sans for comments) that fontconfig must stand in for, one
    // lookup each the first time text is shown.
    const QFont fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    m_lexer->setDefaultFont(fixed);
    m_lexer->setFont(fixed, -1);
    m_lexer->setFoldCompact(false);
    setLexer(m_lexer);

    // Only Control alone with the page's letters edits; shifted variants (Control+Shift+Z
    // among them) do nothing here.
    for (QsciCommand* c : standardCommands()->commands()) {
        for (int key : {c->key(), c->alternateKey()}) {
            if ((key & Qt::SHIFT) && (key & Qt::CTRL) && (key & 0xFFFF) >= Qt::Key_A &&
                (key & 0xFFFF) <= Qt::Key_Z) {
                if (c->key() == key)
                    c->setKey(0);
                else
                    c->setAlternateKey(0);
            }
        }
    }
    connect(this, &QsciScintilla::textChanged, this, [this] {
        if (m_settingText)
            return;
        ++m_editCount;
        emit edited();
    });
    // The whole text is coloured and wrapped in idle time, after what is on screen.
    SendScintilla(SCI_SETIDLESTYLING, SC_IDLESTYLING_ALL);
    connect(this, &QsciScintilla::selectionChanged, this, &SourceView::statusChanged);
}

void SourceView::ColoraEditCode(const QString& schemeFile) {
    if (m_schemeFile.toLower() == schemeFile.toLower())
        return;
    m_schemeFile = schemeFile;
    const editor::SyntaxScheme scheme = editor::loadSyntaxScheme(schemeFile);
    auto colour = [&](const char* name, const char* fallback) {
        return QColor(scheme.colour(QString::fromLatin1(name), QString::fromLatin1(fallback)));
    };
    const QColor paper = colour("Paper", "#FFFFFF");
    m_lexer->setDefaultPaper(paper);
    m_lexer->setPaper(paper, -1);
    m_lexer->setColor(colour("Default", "#1F2328"), -1);
    const struct {
        const char* name;
        const char* fallback;
        std::initializer_list<int> styles;
    } map[] = {
        {"Tag", "#0550AE", {QsciLexerHTML::Tag, QsciLexerHTML::XMLTagEnd}},
        {"UnknownTag", "#CF222E", {QsciLexerHTML::UnknownTag}},
        {"Attribute", "#953800", {QsciLexerHTML::Attribute, QsciLexerHTML::UnknownAttribute}},
        {"Value",
         "#0A3069",
         {QsciLexerHTML::HTMLDoubleQuotedString, QsciLexerHTML::HTMLSingleQuotedString,
          QsciLexerHTML::OtherInTag}},
        {"Number", "#0550AE", {QsciLexerHTML::HTMLNumber}},
        {"Comment", "#6E7781", {QsciLexerHTML::HTMLComment, QsciLexerHTML::SGMLComment}},
        {"Entity", "#8250DF", {QsciLexerHTML::Entity}},
        {"Script", "#24292F", {QsciLexerHTML::Script, QsciLexerHTML::JavaScriptDefault}},
        {"Style", "#116329", {QsciLexerHTML::CDATA}},
    };
    for (const auto& m : map) {
        const QColor c = colour(m.name, m.fallback);
        for (int style : m.styles)
            m_lexer->setColor(c, style);
    }
    setCaretForegroundColor(colour("Caret", "#000000"));
    setSelectionBackgroundColor(colour("Selection", "#CCE0FF"));
    setMarginsBackgroundColor(colour("Margin", "#F5F6F8"));
    setFoldMarginColors(colour("Margin", "#F5F6F8"), colour("Margin", "#F5F6F8"));
}

void SourceView::setSourceText(const QString& text) {
    m_settingText = true;
    // With wrapping on, new text is laid out line by line to its end before setText returns:
    // about a second for a 1 MB page. Switched on again afterwards, wrapping does the lines on
    // screen first and the rest in idle time.
    pauseIdleWork();
    setText(text);
    m_awaitingText = false;
    if (isVisible())
        resumeIdleWork();
    m_settingText = false;
    emit statusChanged();
}

// A hidden page would go on wrapping and colouring its whole text in idle time, which on a large
// message competes with the visual page for the event loop.
void SourceView::pauseIdleWork() {
    const long wrap = SendScintilla(SCI_GETWRAPMODE);
    if (wrap != SC_WRAP_NONE) {
        m_pausedWrap = wrap;
        SendScintilla(SCI_SETWRAPMODE, SC_WRAP_NONE);
    }
    SendScintilla(SCI_SETIDLESTYLING, SC_IDLESTYLING_NONE);
}

void SourceView::resumeIdleWork() {
    SendScintilla(SCI_SETIDLESTYLING, SC_IDLESTYLING_ALL);
    if (m_pausedWrap != SC_WRAP_NONE) {
        SendScintilla(SCI_SETWRAPMODE, m_pausedWrap);
        m_pausedWrap = SC_WRAP_NONE;
    }
}

void SourceView::releaseIdleWork() {
    m_awaitingText = false;
    if (isVisible())
        resumeIdleWork();
}

void SourceView::showEvent(QShowEvent* event) {
    if (!m_awaitingText)
        resumeIdleWork();
    QsciScintilla::showEvent(event);
}

void SourceView::hideEvent(QHideEvent* event) {
    QsciScintilla::hideEvent(event);
    pauseIdleWork();
}

void SourceView::findDialog() {
    const std::optional<QString> text =
        dialogs().askText(this, QStringLiteral("Find"), QStringLiteral("Find:"), m_lastFind);
    if (!text || text->isEmpty())
        return;
    m_lastFind = *text;
    findFirst(*text, false, false, false, true);
}

void SourceView::keyPressEvent(QKeyEvent* event) {
    // Control alone with a letter: the page's own operations; Control+F is its find dialog.
    if (event->modifiers() == Qt::ControlModifier && event->key() == Qt::Key_F) {
        findDialog();
        return;
    }
    QsciScintilla::keyPressEvent(event);
}

void SourceView::keyReleaseEvent(QKeyEvent* event) {
    QsciScintilla::keyReleaseEvent(event);
    emit statusChanged();
}

void SourceView::mouseReleaseEvent(QMouseEvent* event) {
    QsciScintilla::mouseReleaseEvent(event);
    emit statusChanged();
}

void SourceView::mouseMoveEvent(QMouseEvent* event) {
    QsciScintilla::mouseMoveEvent(event);
    emit pointerMoved();
}

void SourceView::contextMenuEvent(QContextMenuEvent* event) {
    emit contextMenuAt(event->globalPos());
}

} // namespace quillora::gui
