#pragma once

#include <QWidget>

class QProgressBar;

namespace quillora::gui {

class AboutPanel;

// The start-up window: the program's name, version and links, and the progress of the
// loading, which the start-up code drives through PRG().
class frmSplash : public QWidget {
    Q_OBJECT
public:
    explicit frmSplash(QWidget* parent = nullptr);

    void Form_Load();

    // True the first time only: the start-up sequence runs once per window, however often
    // the window is activated.
    bool firstActivation();

    QProgressBar* PRG() const { return m_progress; }
    AboutPanel* panel() const { return m_panel; }

private:
    AboutPanel* m_panel = nullptr;
    QProgressBar* m_progress = nullptr;
    bool m_activated = false;
};

} // namespace quillora::gui
