#pragma once

#include <QDialog>

class QLabel;

namespace quillora::gui {

class AboutPanel;

// The About window. It is created once and only ever hidden: Escape, a click on its
// background, its picture or its version label, and the window system's close all hide it.
class frmInfoSu : public QDialog {
    Q_OBJECT
public:
    explicit frmInfoSu(QWidget* parent = nullptr);

    // The program's one About window, made on first use.
    static frmInfoSu* instance();
    // Brings the window up in front of the window that asked for it.
    void showAbout();

    void Form_Load();
    AboutPanel* panel() const { return m_panel; }

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    AboutPanel* m_panel = nullptr;
};

} // namespace quillora::gui
