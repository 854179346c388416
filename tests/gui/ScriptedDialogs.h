#pragma once

#include "gui/app/Dialogs.h"
#include "gui/app/Session.h"
#include "gui/app/frmMessage.h"

#include <QList>
#include <QPrinter>
#include <QString>
#include <QStringList>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <optional>

// The session's dialogs for tests: every question is answered by the test (or refused), and
// everything the program would have shown or opened is recorded. Nothing modal ever appears.
class ScriptedDialogs : public quillora::gui::Dialogs {
public:
    struct FileQuestion {
        QString title, filter;
        bool save = false;
    };
    struct ErrorReport {
        QString title, text;
    };

    // Unset: a question is answered No, an information box OK.
    std::function<int(const quillora::gui::MessageRequest&)> onAnswer;
    // Unset: every file question is cancelled.
    std::function<QString(const FileQuestion&)> onFile;
    // Unset: every print is cancelled; set, the page is printed to that PDF file.
    QString printToPdf;
    // Unset: every colour question is cancelled.
    std::function<std::optional<QColor>(const QColor& initial)> onColor;
    // Unset: every text question is cancelled.
    std::function<std::optional<QString>(const QString& label)> onText;

    QList<quillora::gui::MessageRequest> boxes; // as shown (their box pointer cleared)
    QList<FileQuestion> fileQuestions;
    QList<ErrorReport> errorReports;
    QStringList opened;

    QString openFileName(QWidget*, const QString& title, const QString& filter) override {
        fileQuestions << FileQuestion{title, filter, false};
        return onFile ? onFile(fileQuestions.last()) : QString();
    }
    QString saveFileName(QWidget*, const QString& title, const QString& filter) override {
        fileQuestions << FileQuestion{title, filter, true};
        return onFile ? onFile(fileQuestions.last()) : QString();
    }
    std::optional<QColor> chooseColor(QWidget*, const QColor& initial, const QString&) override {
        return onColor ? onColor(initial) : std::nullopt;
    }
    std::optional<QString> askText(QWidget*, const QString&, const QString& label,
                                   const QString&) override {
        return onText ? onText(label) : std::nullopt;
    }
    bool setUpPrinter(QWidget*, QPrinter& printer) override {
        if (printToPdf.isEmpty())
            return false;
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(printToPdf);
        return true;
    }
    int answer(const quillora::gui::MessageRequest& request) override {
        using namespace quillora::gui;
        const int id = onAnswer                          ? onAnswer(request)
                       : request.buttons.contains(kIdNo) ? kIdNo
                                                         : request.buttons.value(0);
        boxes << request;
        boxes.last().box = nullptr;
        return id;
    }
    void errorReport(QWidget*, const QString& title, const QString& text) override {
        errorReports << ErrorReport{title, text};
    }
    void open(QWidget*, const QString& target) override { opened << target; }
};

// Installs fresh scripted dialogs in the session and returns them.
inline ScriptedDialogs& scriptDialogs() {
    auto d = std::make_shared<ScriptedDialogs>();
    quillora::gui::setDialogs(d);
    return *d;
}

// The scripted dialogs the session holds now (a session reset drops them: scriptDialogs()).
inline ScriptedDialogs& scripted() {
    auto* d = dynamic_cast<ScriptedDialogs*>(&quillora::gui::dialogs());
    if (!d) {
        ADD_FAILURE() << "the session's dialogs are not scripted";
        return scriptDialogs();
    }
    return *d;
}
