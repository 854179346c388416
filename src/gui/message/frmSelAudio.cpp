#include "gui/message/frmSelAudio.h"

#include "gui/app/Dialogs.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QToolButton>

namespace quillora::gui {

frmSelAudio::frmSelAudio(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmSelAudio"));
    setWindowTitle(QStringLiteral("Background sound"));
    setModal(true);
    auto* grid = new QGridLayout(this);
    auto* fileLabel = new QLabel(QStringLiteral("Sound file:"), this);
    fileLabel->setObjectName(QStringLiteral("lbl_0"));
    txtFileAudio = new QLineEdit(this);
    txtFileAudio->setObjectName(QStringLiteral("txtFileAudio"));
    txtFileAudio->setMinimumWidth(300);
    fileLabel->setBuddy(txtFileAudio);
    auto* browse = new QToolButton(this);
    browse->setObjectName(QStringLiteral("cmdsfoglia"));
    browse->setText(QStringLiteral("..."));
    connect(browse, &QToolButton::clicked, this, &frmSelAudio::cmdsfoglia_Click);
    grid->addWidget(fileLabel, 0, 0);
    grid->addWidget(txtFileAudio, 0, 1, 1, 2);
    grid->addWidget(browse, 0, 3);

    chkInfinito = new QCheckBox(QStringLiteral("Loop forever"), this);
    chkInfinito->setObjectName(QStringLiteral("chkInfinito"));
    connect(chkInfinito, &QCheckBox::toggled, this, &frmSelAudio::chkInfinito_Click);
    grid->addWidget(chkInfinito, 1, 1, 1, 3);

    auto* countLabel = new QLabel(QStringLiteral("Times to play:"), this);
    countLabel->setObjectName(QStringLiteral("lbl_1"));
    txtNum = new QLineEdit(QStringLiteral("1"), this);
    txtNum->setObjectName(QStringLiteral("txtNum"));
    txtNum->setMaximumWidth(70);
    txtNum->installEventFilter(this);
    countLabel->setBuddy(txtNum);
    grid->addWidget(countLabel, 2, 0);
    grid->addWidget(txtNum, 2, 1);

    auto* ok = new QPushButton(QStringLiteral("OK"), this);
    ok->setObjectName(QStringLiteral("cmdOK"));
    ok->setDefault(true);
    connect(ok, &QPushButton::clicked, this, &frmSelAudio::cmdOK_Click);
    grid->addWidget(ok, 3, 2, 1, 2, Qt::AlignRight);
    grid->setColumnStretch(2, 1);
}

void frmSelAudio::reset() {
    txtFileAudio->clear();
    m_choice = {};
}

void frmSelAudio::cmdsfoglia_Click() {
    const QString file = dialogs().openFileName(this, QStringLiteral("Seleziona file Audio"),
                                                QStringLiteral("File Wave (*.wav)|*.wav|") +
                                                    QStringLiteral("File MP3 (*.mp3)|*.mp3|"));
    if (!file.isEmpty())
        txtFileAudio->setText(file);
}

void frmSelAudio::chkInfinito_Click() {
    txtNum->setEnabled(!chkInfinito->isChecked());
}

void frmSelAudio::txtNum_LostFocus() {
    txtNum->setText(QString::number(BackgroundSound::loopCount(txtNum->text())));
}

void frmSelAudio::cmdOK_Click() {
    txtNum_LostFocus();
    m_choice.file = txtFileAudio->text().trimmed();
    m_choice.infinite = chkInfinito->isChecked();
    m_choice.loops = BackgroundSound::loopCount(txtNum->text());
    hide();
    emit chosen(m_choice);
}

bool frmSelAudio::eventFilter(QObject* watched, QEvent* event) {
    if (watched == txtNum && event->type() == QEvent::FocusOut)
        txtNum_LostFocus();
    return QDialog::eventFilter(watched, event);
}

void frmSelAudio::closeEvent(QCloseEvent* event) {
    event->ignore();
    hide();
}

} // namespace quillora::gui
