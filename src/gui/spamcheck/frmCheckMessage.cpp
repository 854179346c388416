#include "gui/spamcheck/frmCheckMessage.h"

#include "core/spamcheck/SendSettings.h"
#include "gui/app/Session.h"
#include "gui/app/ThemeIcons.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QIcon>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace quillora::gui {

namespace {

using namespace Qt::StringLiterals;

constexpr int kFindingRole = Qt::UserRole + 1;

QString settingsFile() {
    return session().folders.pathFileImp + QString::fromLatin1(SendSettings::kFileName);
}

QIcon severityIcon(check::Severity s) {
    switch (s) {
    case check::Severity::Error:
        return themeIcon(u"dialog-error"_s);
    case check::Severity::Warning:
        return themeIcon(u"dialog-warning"_s);
    case check::Severity::Hint:
        break;
    }
    return themeIcon(u"dialog-information"_s);
}

QString severityText(check::Severity s) {
    const char* key = s == check::Severity::Error     ? "chkError"
                      : s == check::Severity::Warning ? "chkWarning"
                                                      : "chkHint";
    return session().texts.get(QString::fromLatin1(key));
}

} // namespace

frmCheckMessage::frmCheckMessage(Source source, QWidget* parent)
    : QDialog(parent), m_source(std::move(source)) {
    setObjectName(u"frmCheckMessage"_s);
    setWindowIcon(themeIcon(u"tools-check-spelling"_s));
    auto* layout = new QVBoxLayout(this);
    lblSummary = new QLabel(this);
    lblSummary->setObjectName(u"lblSummary"_s);
    QFont bold = lblSummary->font();
    bold.setBold(true);
    lblSummary->setFont(bold);
    layout->addWidget(lblSummary);

    lstFindings = new QTreeWidget(this);
    lstFindings->setObjectName(u"lstFindings"_s);
    lstFindings->setColumnCount(3);
    lstFindings->setRootIsDecorated(false);
    lstFindings->setWordWrap(true);
    lstFindings->setUniformRowHeights(false);
    lstFindings->header()->setStretchLastSection(false);
    lstFindings->header()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    lstFindings->header()->setSectionResizeMode(1, QHeaderView::Stretch);
    lstFindings->header()->setSectionResizeMode(2, QHeaderView::ResizeToContents);
    layout->addWidget(lstFindings, 1);

    auto* row = new QHBoxLayout;
    lblSizeLimit = new QLabel(this);
    spnSizeLimit = new QSpinBox(this);
    spnSizeLimit->setObjectName(u"spnSizeLimit"_s);
    spnSizeLimit->setRange(1, 1024);
    spnSizeLimit->setValue(SendSettings::read(settingsFile()).sizeLimitMB);
    lblSizeLimit->setBuddy(spnSizeLimit);
    cmdAgain = new QPushButton(themeIcon(u"view-refresh"_s), QString(), this);
    cmdAgain->setObjectName(u"cmdAgain"_s);
    cmdAgain->setShortcut(QKeySequence::Refresh);
    cmdClose = new QPushButton(this);
    cmdClose->setObjectName(u"cmdClose"_s);
    row->addWidget(lblSizeLimit);
    row->addWidget(spnSizeLimit);
    row->addStretch(1);
    row->addWidget(cmdAgain);
    row->addWidget(cmdClose);
    layout->addLayout(row);
    resize(760, 420);

    connect(cmdAgain, &QPushButton::clicked, this, &frmCheckMessage::runCheck);
    connect(cmdClose, &QPushButton::clicked, this, &QDialog::close);
    connect(lstFindings, &QTreeWidget::itemActivated, this, &frmCheckMessage::choose);
    connect(lstFindings, &QTreeWidget::itemClicked, this, &frmCheckMessage::choose);
    connect(spnSizeLimit, &QSpinBox::valueChanged, this, [this](int mb) {
        SendSettings s = SendSettings::read(settingsFile());
        if (s.sizeLimitMB == mb)
            return;
        s.sizeLimitMB = mb;
        s.write(settingsFile());
        runCheck();
    });
    applyTexts();
}

void frmCheckMessage::applyTexts() {
    const Texts& t = session().texts;
    setWindowTitle(t.get(u"chkTitle"_s));
    lstFindings->setHeaderLabels({QString(), t.get(u"chkTitle"_s), QString()});
    lstFindings->setHeaderHidden(true);
    lblSizeLimit->setText(t.get(u"chkSizeLimit"_s));
    cmdAgain->setText(t.get(u"chkAgain"_s));
    const QString close = t.get(u"frmMessage.cmdOK.Caption"_s);
    cmdClose->setText(close.isEmpty() ? u"OK"_s : close);
}

void frmCheckMessage::runCheck() {
    std::optional<check::CheckInput> input = m_source ? m_source() : std::nullopt;
    lstFindings->clear();
    m_findings.clear();
    if (!input) {
        lblSummary->clear();
        return;
    }
    input->sizeLimitBytes = qint64(spnSizeLimit->value()) * 1024 * 1024;
    m_findings = check::runCheck(*input);
    int counts[3] = {0, 0, 0};
    for (size_t i = 0; i < m_findings.size(); ++i) {
        const check::Finding& f = m_findings[i];
        ++counts[int(f.severity)];
        auto* item = new QTreeWidgetItem(lstFindings);
        item->setIcon(0, severityIcon(f.severity));
        item->setText(0, severityText(f.severity));
        item->setText(1, check::describe(f, session().texts));
        item->setToolTip(1, item->text(1));
        item->setText(2, f.rule);
        item->setData(0, kFindingRole, int(i));
        if (f.element.isSet())
            item->setIcon(2, themeIcon(u"go-jump"_s));
    }
    const Texts& t = session().texts;
    lblSummary->setText(m_findings.empty()
                            ? t.get(u"chkNothing"_s)
                            : t.get(u"chkSummary"_s).arg(counts[0]).arg(counts[1]).arg(counts[2]));
    if (lstFindings->topLevelItemCount() > 0)
        lstFindings->setCurrentItem(lstFindings->topLevelItem(0));
}

void frmCheckMessage::choose(QTreeWidgetItem* item) {
    if (!item)
        return;
    const int i = item->data(0, kFindingRole).toInt();
    if (i >= 0 && size_t(i) < m_findings.size() && m_findings[size_t(i)].element.isSet())
        emit elementChosen(m_findings[size_t(i)].element);
}

} // namespace quillora::gui
