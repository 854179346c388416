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
    bool json = false;
    QString file;
    for (const QString& a : args) {
        if (a == QLatin1String("--json"))
            json = true;
        else if (a.startsWith(QLatin1String("--")))
            return usage(QStringLiteral("unknown option \"%1\"").arg(a));
        else if (file.isEmpty())
            file = a;
        else
            return usage(QStringLiteral("info takes one message file"));
    }
    if (file.isEmpty())
        return usage(QStringLiteral("info needs a message file"));
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
    if (args.size() != 2)
        return usage(QStringLiteral("extract needs a message file and a folder"));
    const QString file = args[0];
    const QString dir = QDir(args[1]).absolutePath() + u'/';
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
    QString html, output, subject;
    MessageDocument doc;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString& a = args[i];
        const bool hasValue = i + 1 < args.size();
        if (a == QLatin1String("-o") || a == QLatin1String("--output")) {
            if (!hasValue)
                return usage(QStringLiteral("%1 needs a file name").arg(a));
            output = args[++i];
        } else if (a == QLatin1String("--subject")) {
            if (!hasValue)
                return usage(QStringLiteral("--subject needs a text"));
            doc.subject = args[++i];
        } else if (a == QLatin1String("--priority")) {
            if (!hasValue)
                return usage(QStringLiteral("--priority needs NR, HI or LW"));
            const QString p = args[++i];
            if (p != QLatin1String("NR") && p != QLatin1String("HI") && p != QLatin1String("LW"))
                return usage(
                    QStringLiteral("the priority must be NR, HI or LW, not \"%1\"").arg(p));
            doc.setPriorityCode(p);
        } else if (a == QLatin1String("--attach")) {
            if (!hasValue)
                return usage(QStringLiteral("--attach needs a file"));
            const QString f = args[++i];
            if (!QFileInfo(f).isFile()) {
                printError(QStringLiteral("the attachment %1 does not exist").arg(f));
                return kBadInput;
            }
            doc.attachments << QFileInfo(f).absoluteFilePath();
        } else if (a.startsWith(u'-')) {
            return usage(QStringLiteral("unknown option \"%1\"").arg(a));
        } else if (html.isEmpty()) {
            html = a;
        } else {
            return usage(QStringLiteral("pack takes one HTML page"));
        }
    }
    if (html.isEmpty() || output.isEmpty())
        return usage(QStringLiteral("pack needs an HTML page and -o OUT"));
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
