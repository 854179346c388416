#include "gui/app/Dialogs.h"

#include "core/app/FileFilter.h"
#include "gui/app/Session.h"
#include "gui/app/WindowHelpers.h"
#include "gui/app/frmMessage.h"

#include <QColorDialog>
#include <QFileDialog>
#include <QGuiApplication>
#include <QInputDialog>
#include <QMessageBox>
#include <QPrintDialog>
#include <QPrinter>

namespace quillora::gui {

Dialogs::~Dialogs() = default;

QString Dialogs::openFileName(QWidget* parent, const QString& title, const QString& filter) {
    return QFileDialog::getOpenFileName(parent, title, QString(), FileFilter::qtFilter(filter));
}

QString Dialogs::saveFileName(QWidget* parent, const QString& title, const QString& filter) {
    return QFileDialog::getSaveFileName(parent, title, QString(), FileFilter::qtFilter(filter));
}

std::optional<QColor> Dialogs::chooseColor(QWidget* parent, const QColor& initial,
                                           const QString& title) {
    const QColor c = QColorDialog::getColor(initial, parent, title);
    if (!c.isValid())
        return std::nullopt;
    return c;
}

std::optional<QString> Dialogs::askText(QWidget* parent, const QString& title, const QString& label,
                                        const QString& initial) {
    bool ok = false;
    const QString text =
        QInputDialog::getText(parent, title, label, QLineEdit::Normal, initial, &ok);
    if (!ok)
        return std::nullopt;
    return text;
}

bool Dialogs::setUpPrinter(QWidget* parent, QPrinter& printer) {
    // Nobody can answer a print dialog on the offscreen platform (batch runs).
    if (QGuiApplication::platformName() == QLatin1String("offscreen"))
        return false;
    QPrintDialog dialog(&printer, parent);
    return dialog.exec() == QDialog::Accepted;
}

int Dialogs::answer(const MessageRequest& request) {
    return request.box ? request.box->exec() : 0;
}

void Dialogs::errorReport(QWidget* parent, const QString& title, const QString& text) {
    QMessageBox box(QMessageBox::Information, title, text, QMessageBox::Ok, parent);
    box.exec();
}

void Dialogs::open(QWidget* owner, const QString& target) {
    Navigate(owner, target);
}

Dialogs& dialogs() {
    std::shared_ptr<Dialogs>& d = session().dialogs;
    if (!d)
        d = std::make_shared<Dialogs>();
    return *d;
}

void setDialogs(std::shared_ptr<Dialogs> replacement) {
    session().dialogs = std::move(replacement);
}

} // namespace quillora::gui
