#pragma once

#include "gui/app/Dialogs.h"

#include <QHash>
#include <QString>

// Answers for a run that nobody watches (scripts, the whole-program tests): set
// QUILLORA_ANSWERS to comma-separated "question-key=button" pairs, for example
// "id_Recupero=cmdRipristina", and "file=PATH" for the name a file question gets. A question
// without an answer gets No (an information box OK), a file question is cancelled; each
// question and error report is written to standard error, so a script sees what it was asked.
namespace quillora::gui {

class ScriptedAnswers : public Dialogs {
public:
    // Null when the variable is not set: the real dialogs stay.
    static std::shared_ptr<ScriptedAnswers> fromEnvironment();
    explicit ScriptedAnswers(const QString& spec);

    QString openFileName(QWidget*, const QString& title, const QString& filter) override;
    QString saveFileName(QWidget*, const QString& title, const QString& filter) override;
    std::optional<QColor> chooseColor(QWidget*, const QColor&, const QString&) override;
    std::optional<QString> askText(QWidget*, const QString&, const QString&,
                                   const QString&) override;
    bool setUpPrinter(QWidget*, QPrinter&) override;
    int answer(const MessageRequest& request) override;
    void errorReport(QWidget*, const QString& title, const QString& text) override;
    void open(QWidget*, const QString& target) override;

private:
    QHash<QString, QString> m_buttons; // question key -> button object name
    QString m_file;
};

} // namespace quillora::gui
