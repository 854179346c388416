#include "cli/Commands.h"

#include "core/app/TextFile.h"
#include "core/message/MessageFile.h"
#include "core/message/References.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QTextStream>

namespace quillora::cli {

namespace {

// Files above this size report their progress on stderr.
constexpr qint64 kProgressThreshold = 4 * 1024 * 1024;

MessageFile::Progress progressPrinter(const QString& what, qint64 size) {
    if (size < kProgressThreshold)
        return {};
    return [what, last = -1](qint64 done, qint64 total) mutable {
        const int pct = total > 0 ? int(done * 100 / total) : 100;
        if (pct / 10 == last / 10)
            return;
        last = pct;
        QTextStream(stderr) << what << ": " << pct << "%" << Qt::endl;
    };
}

QString folderOf(const QString& file) {
    return QFileInfo(file).absolutePath() + u'/';
}

} // namespace

int info(const QStringList& args) {
    const QCommandLineOption jsonOption(QStringLiteral("json"),
                                        QStringLiteral("Print one JSON object instead of text."));
    const Syntax syntax{QStringLiteral("info"),
                        QStringLiteral("[--json] FILE"),
                        QStringLiteral("Show what a message file holds: subject, priority, "
                                       "attachments,\nembedded files."),
                        {jsonOption},
                        {{QStringLiteral("FILE"), QStringLiteral("The message file.")}}};
    QCommandLineParser parser;
    if (const std::optional<int> rc = parseCommand(parser, syntax, args))
        return *rc;
    const bool json = parser.isSet(jsonOption);
    const QString file = parser.positionalArguments().at(0);
    const MessageFile::ReadResult r = MessageFile::read(file);
    if (!r.ok()) {
        printError(r.error);
        return kBadInput;
    }
    const MessageFile::Content& c = r.content;
    const qsizetype bodyBytes = c.body.toUtf8().size();
    if (json) {
        QJsonArray objects;
        for (const auto& o : c.objects)
            objects.append(QJsonObject{{"path", o.storedPath}, {"name", o.name}, {"size", o.size}});
        const QJsonObject out{{"version", c.version},
                              {"subject", c.subject},
                              {"priority", c.priority},
                              {"attachments", QJsonArray::fromStringList(c.storedAttachments)},
                              {"objects", objects},
                              {"body_bytes", bodyBytes}};
        printOut(QString::fromUtf8(QJsonDocument(out).toJson(QJsonDocument::Indented)));
    } else {
        QString out;
        QTextStream s(&out);
        s << "version:     " << c.version << "\n"
          << "subject:     " << c.subject << "\n"
          << "priority:    " << c.priority << "\n"
          << "body:        " << bodyBytes << " bytes\n"
          << "attachments: " << c.storedAttachments.size() << "\n";
        for (const QString& a : c.storedAttachments)
            s << "  " << a << "\n";
        s << "objects:     " << c.objects.size() << "\n";
        for (const auto& o : c.objects)
            s << "  " << o.size << "\t" << (o.name.isEmpty() ? QStringLiteral("(refused)") : o.name)
              << "\t" << o.storedPath << "\n";
        s.flush();
        printOut(out);
    }
    for (const QString& w : c.warnings)
        printError(QStringLiteral("%1: %2").arg(file, w));
    return kOk;
}

int extract(const QStringList& args) {
    const Syntax syntax{
        QStringLiteral("extract"),
        QStringLiteral("FILE DIR"),
        QStringLiteral("Restore the files embedded in a message file into DIR, and write "
                       "the message\nto DIR/body.html with its references pointing at them."),
        {},
        {{QStringLiteral("FILE"), QStringLiteral("The message file.")},
         {QStringLiteral("DIR"), QStringLiteral("The folder to write into; made if missing.")}}};
    QCommandLineParser parser;
    if (const std::optional<int> rc = parseCommand(parser, syntax, args))
        return *rc;
    const QString file = parser.positionalArguments().at(0);
    const QString dir = QDir(parser.positionalArguments().at(1)).absolutePath() + u'/';
    if (!QDir().mkpath(dir)) {
        printError(QStringLiteral("cannot create the folder %1").arg(dir));
        return kBadInput;
    }
    const MessageFile::ReadResult r =
        MessageFile::read(file, dir, progressPrinter(file, QFileInfo(file).size()));
    if (!r.ok()) {
        printError(r.error);
        return kBadInput;
    }
    for (const QString& w : r.content.warnings)
        printError(QStringLiteral("%1: %2").arg(file, w));
    // As after opening: every local reference points at the restored copy.
    const References::LoadResult body = References::redirectForLoad(r.content.body, dir, dir);
    QSaveFile out(dir + QStringLiteral("body.html"));
    if (!out.open(QIODevice::WriteOnly) || out.write(body.html.toUtf8()) < 0 || !out.commit()) {
        printError(QStringLiteral("cannot write %1body.html: %2").arg(dir, out.errorString()));
        return kBadInput;
    }
    return kOk;
}

int pack(const QStringList& args) {
    const QCommandLineOption outputOption({QStringLiteral("o"), QStringLiteral("output")},
                                          QStringLiteral("The message file to write (required)."),
                                          QStringLiteral("OUT"));
    const QCommandLineOption subjectOption(QStringLiteral("subject"),
                                           QStringLiteral("The subject of the message."),
                                           QStringLiteral("S"));
    const QCommandLineOption priorityOption(QStringLiteral("priority"),
                                            QStringLiteral("NR (normal, the default), HI or LW."),
                                            QStringLiteral("NR|HI|LW"));
    const QCommandLineOption attachOption(
        QStringLiteral("attach"),
        QStringLiteral("Attach a file; repeat it for more, they are kept in this order."),
        QStringLiteral("FILE"));
    const Syntax syntax{
        QStringLiteral("pack"),
        QStringLiteral("HTML -o OUT [options]"),
        QStringLiteral("Make a message file from an HTML page and every local file it refers "
                       "to.\nReferences to the web, data:, cid: and mailto: are left as they are."),
        {outputOption, subjectOption, priorityOption, attachOption},
        {{QStringLiteral("HTML"), QStringLiteral("The page; relative references are resolved "
                                                 "against its folder.")}}};
    QCommandLineParser parser;
    if (const std::optional<int> rc = parseCommand(parser, syntax, args))
        return *rc;
    const QString html = parser.positionalArguments().at(0);
    const QString output = parser.value(outputOption);
    if (output.isEmpty())
        return usageError(syntax, QStringLiteral("-o OUT is missing"));
    MessageDocument doc;
    doc.subject = parser.value(subjectOption);
    if (parser.isSet(priorityOption)) {
        const QString p = parser.value(priorityOption);
        if (p != QLatin1String("NR") && p != QLatin1String("HI") && p != QLatin1String("LW"))
            return usageError(
                syntax, QStringLiteral("the priority must be NR, HI or LW, not \"%1\"").arg(p));
        doc.setPriorityCode(p);
    }
    for (const QString& f : parser.values(attachOption)) {
        if (!QFileInfo(f).isFile()) {
            printError(QStringLiteral("the attachment %1 does not exist").arg(f));
            return kBadInput;
        }
        doc.attachments << QFileInfo(f).absoluteFilePath();
    }
    const TextFile::Decoded page = TextFile::read(html);
    if (!page.ok()) {
        printError(QStringLiteral("%1: %2").arg(html, TextFile::describe(page.error)));
        return kBadInput;
    }
    doc.body = page.text;
    MessageFile::SaveOptions options;
    options.baseFolder = folderOf(html);
    qint64 total = 0;
    for (const QString& o : MessageFile::objectList(doc, options.baseFolder))
        total += QFileInfo(o).size();
    options.progress = progressPrinter(output, total);
    const MessageFile::SaveResult r = MessageFile::SalvaMessaggio(doc, output, options);
    if (!r.ok()) {
        printError(QStringLiteral("cannot save %1: %2").arg(r.path, r.description));
        return kBadInput;
    }
    return kOk;
}

} // namespace quillora::cli
