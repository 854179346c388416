#pragma once

#include <QColor>
#include <QString>
#include <memory>
#include <optional>

class QPrinter;
class QWidget;

namespace quillora::gui {

struct MessageRequest;

// Every question the program puts to the user, and everything it hands to the desktop, goes
// through the one Dialogs object of the session. Tests and scripted runs replace that object
// as a whole, so no modal window can wait for an answer that nobody will give.
class Dialogs {
public:
    virtual ~Dialogs();

    // A file to open, or a name to save under; filter is in the program's "desc|pattern|" form.
    // Empty when the user cancels.
    virtual QString openFileName(QWidget* parent, const QString& title, const QString& filter);
    virtual QString saveFileName(QWidget* parent, const QString& title, const QString& filter);

    // A colour, starting from initial; nullopt when the user cancels.
    virtual std::optional<QColor> chooseColor(QWidget* parent, const QColor& initial,
                                              const QString& title);

    // One line of text; nullopt when the user cancels.
    virtual std::optional<QString> askText(QWidget* parent, const QString& title,
                                           const QString& label, const QString& initial);

    // The printer and its settings for a print; false when the user cancels.
    virtual bool setUpPrinter(QWidget* parent, QPrinter& printer);

    // A filled message box (request.box) is shown modally; the id of the button chosen, or 0
    // when the box was closed without one.
    virtual int answer(const MessageRequest& request);

    // The error report: its title and its text, line by line.
    virtual void errorReport(QWidget* parent, const QString& title, const QString& text);

    // An address or a file, opened with the desktop's program for it.
    virtual void open(QWidget* owner, const QString& target);
};

// The session's dialogs.
Dialogs& dialogs();
// Replaces the session's dialogs; nullptr puts the real ones back.
void setDialogs(std::shared_ptr<Dialogs> replacement);

} // namespace quillora::gui
