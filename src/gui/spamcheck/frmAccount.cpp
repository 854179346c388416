#include "gui/spamcheck/frmAccount.h"

#include "gui/app/LanguageApplier.h"
#include "gui/app/Session.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTableWidget>
#include <QVBoxLayout>

namespace quillora::gui {

namespace {

enum Column { ColName, ColAddress, ColServer, ColPort, ColAuth, ColSecurity, ColActive, ColCount };

template <class W> W* named(W* w, const char* name) {
    w->setObjectName(QString::fromLatin1(name));
    return w;
}

} // namespace

frmAccount::frmAccount(QWidget* parent) : QDialog(parent) {
    setObjectName(QStringLiteral("frmAccount"));
    setWindowTitle(QStringLiteral("Sender accounts"));

    lstAccount = named(new QTableWidget(0, ColCount, this), "lstAccount");
    lstAccount->setHorizontalHeaderLabels({QStringLiteral("Name"), QStringLiteral("Address"),
                                           QStringLiteral("Server"), QStringLiteral("Port"),
                                           QStringLiteral("Authentication"),
                                           QStringLiteral("Security"), QStringLiteral("Active")});
    lstAccount->setSelectionBehavior(QAbstractItemView::SelectRows);
    lstAccount->setSelectionMode(QAbstractItemView::SingleSelection);
    lstAccount->setEditTriggers(QAbstractItemView::NoEditTriggers);
    lstAccount->verticalHeader()->hide();
    lstAccount->horizontalHeader()->setStretchLastSection(true);
    lstAccount->setMinimumSize(640, 160);
    connect(lstAccount, &QTableWidget::itemSelectionChanged, this, [this] {
        const QList<QTableWidgetItem*> items = lstAccount->selectedItems();
        if (items.isEmpty())
            return;
        const qint64 id =
            lstAccount->item(items.first()->row(), ColName)->data(Qt::UserRole).toLongLong();
        if (const std::optional<Account> a = AccountStore().find(id))
            showAccount(*a);
    });

    txtNome = named(new QLineEdit(this), "txtNome");
    txtEmail = named(new QLineEdit(this), "txtEmail");
    txtServer = named(new QLineEdit(this), "txtServer");
    txtPorta = named(new QSpinBox(this), "txtPorta");
    txtPorta->setRange(1, 65535);
    cmbAutenticazione = named(new QComboBox(this), "cmbAutenticazione");
    for (const char* auth : {"none", "plain", "login"})
        cmbAutenticazione->addItem(QString::fromLatin1(auth), QString::fromLatin1(auth));
    cmbSicurezza = named(new QComboBox(this), "cmbSicurezza");
    for (const char* security : {"none", "ssl", "starttls", "auto"})
        cmbSicurezza->addItem(AccountStore::securityCaption(QString::fromLatin1(security)),
                              QString::fromLatin1(security));
    chkAttivo = named(new QCheckBox(QStringLiteral("Offered as a sender"), this), "chkAttivo");

    auto* form = new QFormLayout;
    const auto row = [&](const char* name, const char* text, QWidget* field) {
        form->addRow(named(new QLabel(QString::fromUtf8(text), this), name), field);
    };
    row("lblNome", "Display name:", txtNome);
    row("lblEmail", "E-mail address:", txtEmail);
    row("lblServer", "SMTP server:", txtServer);
    row("lblPorta", "Port:", txtPorta);
    row("lblAutenticazione", "Authentication:", cmbAutenticazione);
    row("lblSicurezza", "Security:", cmbSicurezza);
    form->addRow(QString(), chkAttivo);

    lblErrore = named(new QLabel(this), "lblErrore");
    QPalette warning = lblErrore->palette();
    warning.setColor(QPalette::WindowText, QColor(0xb0, 0x00, 0x20));
    lblErrore->setPalette(warning);
    lblErrore->setWordWrap(true);

    auto* cmdNuovo = named(new QPushButton(QStringLiteral("&New"), this), "cmdNuovo");
    cmdSalva = named(new QPushButton(QStringLiteral("&Save"), this), "cmdSalva");
    cmdElimina = named(new QPushButton(QStringLiteral("&Remove"), this), "cmdElimina");
    auto* cmdChiudi = named(new QPushButton(QStringLiteral("&Close"), this), "cmdChiudi");
    connect(cmdNuovo, &QPushButton::clicked, this, &frmAccount::cmdNuovo_Click);
    connect(cmdSalva, &QPushButton::clicked, this, &frmAccount::cmdSalva_Click);
    connect(cmdElimina, &QPushButton::clicked, this, &frmAccount::cmdElimina_Click);
    connect(cmdChiudi, &QPushButton::clicked, this, &QDialog::accept);
    cmdSalva->setDefault(true);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(cmdNuovo);
    buttons->addWidget(cmdSalva);
    buttons->addWidget(cmdElimina);
    buttons->addStretch(1);
    buttons->addWidget(cmdChiudi);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(lstAccount, 1);
    layout->addLayout(form);
    layout->addWidget(lblErrore);
    layout->addLayout(buttons);

    applyWindowTexts(this, session().texts);
    CaricaElenco();
    if (lstAccount->rowCount() == 0)
        cmdNuovo_Click();
}

void frmAccount::CaricaElenco(qint64 select) {
    QString error;
    const std::optional<QList<Account>> all = AccountStore().list(&error);
    if (!all) {
        showError(error);
        return;
    }
    const QSignalBlocker quiet(lstAccount);
    lstAccount->setRowCount(0);
    int selectRow = all->isEmpty() ? -1 : 0;
    for (const Account& a : *all) {
        const int r = lstAccount->rowCount();
        lstAccount->insertRow(r);
        const QStringList cells = {a.displayName,
                                   a.address,
                                   a.smtpServer,
                                   QString::number(a.port),
                                   a.authentication,
                                   AccountStore::securityCaption(a.security),
                                   a.active ? QStringLiteral("1") : QStringLiteral("0")};
        for (int c = 0; c < ColCount; ++c)
            lstAccount->setItem(r, c, new QTableWidgetItem(cells[c]));
        lstAccount->item(r, ColName)->setData(Qt::UserRole, a.id);
        if (a.id == select)
            selectRow = r;
    }
    lstAccount->resizeColumnsToContents();
    if (selectRow >= 0) {
        lstAccount->selectRow(selectRow);
        showAccount(all->at(selectRow));
    }
}

void frmAccount::showAccount(const Account& a) {
    m_editing = a.id;
    txtNome->setText(a.displayName);
    txtEmail->setText(a.address);
    txtServer->setText(a.smtpServer);
    txtPorta->setValue(a.port);
    cmbAutenticazione->setCurrentIndex(std::max(0, cmbAutenticazione->findData(a.authentication)));
    cmbSicurezza->setCurrentIndex(std::max(0, cmbSicurezza->findData(a.security)));
    chkAttivo->setChecked(a.active);
    cmdElimina->setEnabled(a.id != 0);
    lblErrore->clear();
}

Account frmAccount::formAccount() const {
    Account a;
    a.id = m_editing;
    a.displayName = txtNome->text().trimmed();
    a.address = txtEmail->text().trimmed();
    a.smtpServer = txtServer->text().trimmed();
    a.port = txtPorta->value();
    a.authentication = cmbAutenticazione->currentData().toString();
    a.security = cmbSicurezza->currentData().toString();
    a.active = chkAttivo->isChecked();
    return a;
}

void frmAccount::cmdNuovo_Click() {
    const QSignalBlocker quiet(lstAccount);
    lstAccount->clearSelection();
    Account fresh; // the usual submission port with login and STARTTLS
    fresh.authentication = QStringLiteral("login");
    fresh.security = QStringLiteral("starttls");
    showAccount(fresh);
    txtNome->setFocus();
}

bool frmAccount::cmdSalva_Click() {
    const Account a = formAccount();
    QString error;
    AccountStore store;
    qint64 id = a.id;
    if (a.id == 0) {
        const std::optional<qint64> added = store.add(a, &error);
        if (!added) {
            showError(error);
            return false;
        }
        id = *added;
    } else if (!store.update(a, &error)) {
        showError(error);
        return false;
    }
    CaricaElenco(id);
    emit accountsChanged();
    return true;
}

void frmAccount::cmdElimina_Click() {
    if (m_editing == 0)
        return;
    QString error;
    if (!AccountStore().remove(m_editing, &error)) {
        showError(error);
        return;
    }
    m_editing = 0;
    CaricaElenco();
    if (lstAccount->rowCount() == 0)
        cmdNuovo_Click();
    emit accountsChanged();
}

void frmAccount::showError(const QString& text) {
    QString sentence = text;
    if (!sentence.isEmpty())
        sentence[0] = sentence[0].toUpper();
    lblErrore->setText(sentence);
}

} // namespace quillora::gui
