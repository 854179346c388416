#pragma once

#include <Qsci/qsciscintilla.h>

class QsciLexerHTML;

namespace quillora::gui {

// The source page: the body's HTML as coloured text.
class SourceView : public QsciScintilla {
    Q_OBJECT
public:
    explicit SourceView(QWidget* parent = nullptr);

    // Loads the colours of "SyntaxEdit.dll" once: a second call with the same file does nothing.
    void ColoraEditCode(const QString& schemeFile);
    QString schemeFile() const { return m_schemeFile; }

    // Replaces the text without it counting as an edit of the user.
    void setSourceText(const QString& text);
    // Wrapping and colouring run in idle time, and only while the page is shown. When the text
    // is about to be replaced the next time the page is shown, holding that work until the new
    // text arrives spares laying out the old one; release it when no new text comes.
    void holdIdleWorkForNewText() { m_awaitingText = true; }
    void releaseIdleWork();
    // Grows with every change the user makes to the text, so a caller can tell whether the text
    // is still the one it set or saw.
    quint64 editCount() const { return m_editCount; }

    // The find dialog of the page: asks for a text and selects the next match.
    void findDialog();

signals:
    void edited();        // the user changed the text
    void statusChanged(); // the edit states may have changed (CheckButtonCODE)
    void contextMenuAt(QPoint globalPos);
    void pointerMoved();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    QsciLexerHTML* m_lexer = nullptr;
    QString m_schemeFile;
    bool m_settingText = false;
    // The wrap mode set aside while the page is hidden (none when nothing is).
    long m_pausedWrap = 0;
    bool m_awaitingText = false;
    void pauseIdleWork();
    void resumeIdleWork();
    quint64 m_editCount = 0;
    QString m_lastFind;
};

} // namespace quillora::gui
