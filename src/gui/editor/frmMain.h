#pragma once

#include <QMainWindow>

namespace quillora::gui {

// The editor's main window. Closing it always goes through ChiudiEDITOR.
class frmMain : public QMainWindow {
    Q_OBJECT
public:
    explicit frmMain(QWidget* parent = nullptr);

    // The loading phases, each announced in the log.
    void Form_Load(const QString& commandLineFile);

    // Save placement and layout, delete the working folder, write the closing lines, quit.
    void ChiudiEDITOR();

    void CambiaTitoloEditor(const QString& titleName);

    // LeggiIMP applied to this window, ScriviIMP taken from it.
    void applyPlacement();
    void rememberPlacement();

protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    bool m_closing = false;
};

} // namespace quillora::gui
