#include "cli/Commands.h"
#include "cli/Environment.h"

#include "core/app/TextFile.h"
#include "core/app/Texts.h"
#include "core/message/MessageFile.h"
#include "core/message/References.h"
#include "core/spamcheck/PreSendCheck.h"
#include "core/spamcheck/SendSettings.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTextStream>

namespace quillora::cli {

namespace {

// The messages in the language the editor uses on this computer, English when none is chosen.
Texts userTexts(const Folders& folders) {
    QStringList lines;
    TextFile::readLines(folders.languageChoiceFile(), lines, 4096);
    return Texts::builtIn(lines.isEmpty() ? QStringLiteral("English") : lines.first().trimmed());
}

} // namespace

std::optional<check::CheckInput> checkInputFromFile(const QString& file,
                                                    const QString& restoreFolder, QString* error) {
    const MessageFile::ReadResult r = MessageFile::read(file, restoreFolder);
    if (!r.ok()) {
        *error = r.error;
        return std::nullopt;
    }
    const MessageFile::Content& c = r.content;
    check::CheckInput input;
    input.subject = c.subject;
    // As the editor opens it: references to files the message carries point at their copies.
    input.baseFolder = QFileInfo(file).absolutePath() + u'/';
    input.html = References::redirectForLoad(c.body, input.baseFolder, restoreFolder).html;
    for (const QString& stored : c.storedAttachments) {
        const auto name = References::safeFileName(stored);
        if (c.version == 4 && name)
            input.attachments << restoreFolder + *name;
        else
            input.attachments << stored;
    }
    return input;
}

int checkMessage(const QStringList& args) {
    const QCommandLineOption jsonOption(QStringLiteral("json"),
                                        QStringLiteral("Print one JSON object instead of text."));
    const QCommandLineOption limitOption(
        QStringLiteral("size-limit"),
        QStringLiteral("The largest the message may be with its files, in MB (the editor's "
                       "setting, 10 when it has none)."),
        QStringLiteral("MB"));
    const Syntax syntax{
        QStringLiteral("check"),
        QStringLiteral("[--json] [--size-limit MB] FILE"),
        QStringLiteral("Check a message before sending it: subject, alternative texts, missing\n"
                       "files, http images, empty links, the unsubscribe link, merge fields,\n"
                       "size. Exit 0 when there is no error, 3 when there are errors."),
        {jsonOption, limitOption},
        {{QStringLiteral("FILE"), QStringLiteral("The message file.")}}};
    QCommandLineParser parser;
    if (const std::optional<int> rc = parseCommand(parser, syntax, args))
        return *rc;
    const Folders folders = programFolders();
    const SendSettings settings =
        SendSettings::read(folders.pathFileImp + QString::fromLatin1(SendSettings::kFileName));
    qint64 limit = settings.sizeLimitBytes();
    if (parser.isSet(limitOption)) {
        bool ok = false;
        const double mb = parser.value(limitOption).toDouble(&ok);
        if (!ok || mb <= 0)
            return usageError(syntax, QStringLiteral("the size limit must be a positive number "
                                                     "of MB, not \"%1\"")
                                          .arg(parser.value(limitOption)));
        limit = qint64(mb * 1024 * 1024);
    }

    const QTemporaryDir restore;
    if (!restore.isValid()) {
        printError(QStringLiteral("cannot make a temporary folder: %1").arg(restore.errorString()));
        return kBadInput;
    }
    const QString file = parser.positionalArguments().at(0);
    QString error;
    std::optional<check::CheckInput> input =
        checkInputFromFile(file, restore.path() + u'/', &error);
    if (!input) {
        printError(QStringLiteral("%1: %2").arg(file, error));
        return kBadInput;
    }
    input->sizeLimitBytes = limit;
    const std::vector<check::Finding> findings = check::runCheck(*input);
    const Texts texts = userTexts(folders);

    int counts[3] = {0, 0, 0};
    for (const check::Finding& f : findings)
        ++counts[int(f.severity)];
    if (parser.isSet(jsonOption)) {
        QJsonArray list;
        for (const check::Finding& f : findings) {
            QJsonObject o{{"rule", f.rule},
                          {"severity", check::severityName(f.severity)},
                          {"message", check::describe(f, texts)}};
            if (f.element.isSet())
                o.insert("element",
                         QJsonObject{{"tag", f.element.tag}, {"index", f.element.index}});
            list.append(o);
        }
        const QJsonObject out{{"findings", list},
                              {"errors", counts[0]},
                              {"warnings", counts[1]},
                              {"hints", counts[2]}};
        printOut(QString::fromUtf8(QJsonDocument(out).toJson(QJsonDocument::Indented)));
    } else {
        QString out;
        QTextStream s(&out);
        for (const check::Finding& f : findings) {
            s << check::severityName(f.severity).leftJustified(8) << f.rule.leftJustified(18);
            if (f.element.isSet())
                s << "<" << f.element.tag << "> #" << f.element.index + 1 << ": ";
            s << check::describe(f, texts) << "\n";
        }
        s << counts[0] << " errors, " << counts[1] << " warnings, " << counts[2] << " hints\n";
        s.flush();
        printOut(out);
    }
    return counts[0] > 0 ? kHasErrors : kOk;
}

} // namespace quillora::cli
