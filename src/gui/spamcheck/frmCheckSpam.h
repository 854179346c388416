#pragma once

#include "core/spamcheck/SpamDaemon.h"
#include "core/spamcheck/SpamFilter.h"

#include <QDialog>
#include <QPointer>
#include <functional>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;

namespace quillora::gui {

class frmAccount;

// The coloured score bar with its cover: the cover hides the bar from the right, by as many
// hundredths of the bar's length as its extent says.
class ScoreBar : public QWidget {
    Q_OBJECT
public:
    explicit ScoreBar(QWidget* parent = nullptr);
    void setCover(int extent);
    int cover() const { return m_cover; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void placeCover();
    QWidget* picPrgSpam2 = nullptr;
    int m_cover = 100;
};

// The spam check: the message being edited becomes the e-mail a mailing would send, the spam
// filter scores it, and the verdict, score and matched rules are shown. The filter runs as its
// own process while the window stays responsive; Cancel ends it.
class frmCheckSpam : public QDialog {
    Q_OBJECT
public:
    struct Host {
        // SalvaMessaggioPerCheckSpam: the current message written to that path; false on failure.
        std::function<bool(const QString& path)> saveMessage;
        // The folder that relative references of the body resolve against.
        std::function<QString()> baseFolder;
    };

    explicit frmCheckSpam(Host host, QWidget* parent = nullptr);
    ~frmCheckSpam() override;

    void CaricaElencoAccount();
    void cmdAvviaTest_Click();
    void chkReplyTo_Click();
    bool isTesting() const { return m_testing; }
    const SpamReport::Report& report() const { return m_report; }
    // Whether the last check's verdict came from the program's filter daemon.
    bool lastCheckViaDaemon() const { return m_viaDaemon; }
    // The program's one filter daemon for repeated checks; it ends with the application.
    static SpamFilter::Daemon& daemon();

signals:
    // A test ended: with a verdict shown (true), or stopped by a warning, an error or Cancel.
    void testFinished(bool scored);

protected:
    void reject() override;

private:
    QString text(const char* key, const char* fallback) const;
    void warn(const QString& instruction, const QString& content = QString());
    void setFieldsEnabled(bool enabled);
    void resetResult();
    void endTest(bool scored);
    void CheckSpam();
    void filterDone();
    void startDaemon(bool localOnly);
    void openAccounts();

    Host m_host;
    QString m_folder;
    QComboBox* cmbAccount = nullptr;
    QPushButton* cmdAccount = nullptr;
    QLineEdit* txtNomeDestinatario = nullptr;
    QLineEdit* txtEmailDestinatario = nullptr;
    QCheckBox* chkReplyTo = nullptr;
    QLineEdit* txtReply = nullptr;
    QCheckBox* chkConfermaLettura = nullptr;
    QCheckBox* chkContatore = nullptr;
    QPushButton* cmdAvviaTest = nullptr;
    QPushButton* cmdCancel = nullptr;
    QProgressBar* PRG = nullptr;
    QPlainTextEdit* txtLog = nullptr;
    QLabel* lblScore = nullptr;
    ScoreBar* picPrgSpam = nullptr;
    QLabel* picZeroSpam = nullptr;
    QLabel* PicNoSpam = nullptr;
    QLabel* picSiSpam = nullptr;
    SpamFilter::Run* m_run = nullptr;
    QPointer<frmAccount> m_accounts;
    SpamReport::Report m_report;
    bool m_testing = false;
    bool m_viaDaemon = false;
};

} // namespace quillora::gui
