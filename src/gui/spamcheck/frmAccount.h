#pragma once

#include "core/app/AccountStore.h"

#include <QDialog>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;
class QTableWidget;

namespace quillora::gui {

// The sender accounts: listed, added, changed and removed over the accounts database that the
// command line's "accounts" command also uses, so nobody needs a terminal for them.
class frmAccount : public QDialog {
    Q_OBJECT
public:
    explicit frmAccount(QWidget* parent = nullptr);

    // Fills the list from the store and selects the account with that identifier, if any.
    void CaricaElenco(qint64 select = 0);
    // The form holds a new, empty account.
    void cmdNuovo_Click();
    // Stores the form: a new account is added, a listed one changed. False when refused.
    bool cmdSalva_Click();
    void cmdElimina_Click();

signals:
    void accountsChanged();

private:
    void showAccount(const Account& a);
    Account formAccount() const;
    void showError(const QString& text);

    QTableWidget* lstAccount = nullptr;
    QLineEdit* txtNome = nullptr;
    QLineEdit* txtEmail = nullptr;
    QLineEdit* txtServer = nullptr;
    QSpinBox* txtPorta = nullptr;
    QComboBox* cmbAutenticazione = nullptr;
    QComboBox* cmbSicurezza = nullptr;
    QCheckBox* chkAttivo = nullptr;
    QPushButton* cmdSalva = nullptr;
    QPushButton* cmdElimina = nullptr;
    QLabel* lblErrore = nullptr;
    qint64 m_editing = 0; // the account in the form; 0 for a new one
};

} // namespace quillora::gui
