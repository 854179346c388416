#pragma once

#include <QDialog>
#include <QString>
#include <atomic>
#include <functional>
#include <memory>

class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QThread;
class QToolButton;

namespace quillora::tools {
struct SliceResult;
}

namespace quillora::gui {

// Import from an image: a tall picture is scaled to a width, cut into slices and stacked in a
// one-column page that becomes the message's body. The slices are written on worker threads
// while the window stays responsive, with a progress bar and Cancel.
class frmImpDaImg : public QDialog {
    Q_OBJECT
public:
    struct Host {
        // A new working folder for the slices, ending with "/"; the message's current folder
        // stays until the page replaces it. Empty when none can be made.
        std::function<QString()> newWorkFolder;
        // The page becomes the message's body and its folder the message's working folder;
        // done runs once the page is shown (false when it could not be).
        std::function<void(const QString& pageFile, const QString& workFolder,
                           std::function<void(bool)> done)>
            showPage;
    };

    explicit frmImpDaImg(Host host, QWidget* parent = nullptr);
    ~frmImpDaImg() override;

    // cmdImportImg: the checks, the slices, then the page in the visual page.
    void cmdImportImg_Click();
    void cmdFile_Click();
    // The spinners: ±50 on the number in the field.
    void UpDw1_Click(int step);
    void UpDw2_Click(int step);
    bool isConverting() const { return m_running; }

signals:
    // The conversion ended: its page is the body (true), or it failed or was cancelled.
    void finished(bool imported);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void reject() override;

private:
    void warn(const QString& what, const QString& remedy);
    void setRunning(bool running);
    void conversionDone(const tools::SliceResult& result, const QString& workFolder);
    void report(const QString& description);

    Host m_host;
    QLineEdit* txtFile = nullptr;
    QLineEdit* txtMaxWidth = nullptr;
    QLineEdit* txtAltSez = nullptr;
    QPushButton* cmdImportImg = nullptr;
    QPushButton* cmdCancel = nullptr;
    QProgressBar* m_progress = nullptr;
    QThread* m_worker = nullptr;
    bool m_running = false;
    bool m_closeWhenDone = false;
    std::shared_ptr<std::atomic<bool>> m_cancel;
};

} // namespace quillora::gui
