#pragma once

#include "core/message/BackgroundSound.h"

#include <QDialog>

class QCheckBox;
class QLineEdit;

namespace quillora::gui {

// The background sound window: a sound file and how often it plays. OK keeps the three
// results (choice()) and hides the window; closing it hides it too, keeping the last results.
class frmSelAudio : public QDialog {
    Q_OBJECT
public:
    explicit frmSelAudio(QWidget* parent = nullptr);

    // Starts from no file, so a window left without a choice hands back none.
    void reset();
    BackgroundSound::Choice choice() const { return m_choice; }

    void cmdsfoglia_Click();
    void chkInfinito_Click();
    void txtNum_LostFocus();
    void cmdOK_Click();

signals:
    void chosen(const BackgroundSound::Choice& choice);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    QLineEdit* txtFileAudio = nullptr;
    QCheckBox* chkInfinito = nullptr;
    QLineEdit* txtNum = nullptr;
    BackgroundSound::Choice m_choice;
};

} // namespace quillora::gui
