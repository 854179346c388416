#include "gui/app/ScriptedAnswers.h"

#include "gui/app/frmMessage.h"

#include <QTextStream>
#include <cstdio>

namespace quillora::gui {

namespace {

void say(const QString& line) {
    QTextStream err(stderr);
    err << "quillora: " << line << Qt::endl;
}

int buttonId(const QString& name) {
    static const QHash<QString, int> kIds = {
        {QStringLiteral("cmdOK"), kIdOk},
        {QStringLiteral("cmdYes"), kIdYes},
        {QStringLiteral("cmdNo"), kIdNo},
        {QStringLiteral("cmdRipristina"), kIdRestore},
        {QStringLiteral("cmdSalvaAltrove"), kIdSaveElsewhere},
        {QStringLiteral("cmdScarta"), kIdDiscard},
    };
    return kIds.value(name, 0);
}

} // namespace

std::shared_ptr<ScriptedAnswers> ScriptedAnswers::fromEnvironment() {
    if (!qEnvironmentVariableIsSet("QUILLORA_ANSWERS"))
        return nullptr;
    return std::make_shared<ScriptedAnswers>(qEnvironmentVariable("QUILLORA_ANSWERS"));
}

ScriptedAnswers::ScriptedAnswers(const QString& spec) {
    for (const QString& pair : spec.split(u',', Qt::SkipEmptyParts)) {
        const qsizetype eq = pair.indexOf(u'=');
        if (eq <= 0)
            continue;
        const QString key = pair.left(eq).trimmed();
        const QString value = pair.mid(eq + 1).trimmed();
        if (key == u"file")
            m_file = value;
        else
            m_buttons.insert(key, value);
    }
}

QString ScriptedAnswers::openFileName(QWidget*, const QString& title, const QString&) {
    say(QStringLiteral("file question \"%1\": %2").arg(title, m_file));
    return m_file;
}

QString ScriptedAnswers::saveFileName(QWidget*, const QString& title, const QString&) {
    say(QStringLiteral("file question \"%1\": %2").arg(title, m_file));
    return m_file;
}

std::optional<QColor> ScriptedAnswers::chooseColor(QWidget*, const QColor&, const QString&) {
    return std::nullopt;
}

std::optional<QString> ScriptedAnswers::askText(QWidget*, const QString&, const QString& label,
                                                const QString&) {
    say(QStringLiteral("text question \"%1\": cancelled").arg(label));
    return std::nullopt;
}

bool ScriptedAnswers::setUpPrinter(QWidget*, QPrinter&) {
    return false;
}

int ScriptedAnswers::answer(const MessageRequest& request) {
    int id = buttonId(m_buttons.value(request.key));
    if (!request.buttons.contains(id))
        id = request.buttons.contains(kIdNo) ? kIdNo : request.buttons.value(0);
    say(QStringLiteral("question %1 \"%2\": %3")
            .arg(request.key.isEmpty() ? QStringLiteral("-") : request.key,
                 QString(request.instruction).replace(u'\n', u' '))
            .arg(id));
    return id;
}

void ScriptedAnswers::errorReport(QWidget*, const QString& title, const QString& text) {
    say(QStringLiteral("error report \"%1\": %2").arg(title, QString(text).replace(u'\n', u' ')));
}

void ScriptedAnswers::open(QWidget*, const QString& target) {
    say(QStringLiteral("not opened in a scripted run: ") + target);
}

} // namespace quillora::gui
