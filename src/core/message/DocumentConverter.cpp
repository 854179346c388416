#include "core/message/DocumentConverter.h"

#include "core/app/TextFile.h"
#include "core/message/MailImport.h"
#include "core/message/PictureFormat.h"
#include "core/message/References.h"
#include "core/message/TextImport.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QSaveFile>
#include <QStandardPaths>
#include <QUrl>

#include <signal.h>
#include <unistd.h>

namespace quillora::DocumentConverter {

namespace {

// Mails larger than this are no newsletter; the limit keeps a stray file from filling memory.
constexpr qint64 kMaxMailBytes = 256LL * 1024 * 1024;
constexpr qsizetype kDetailChars = 600;

QString withSlash(const QString& folder) {
    return folder.endsWith(u'/') ? folder : folder + u'/';
}

QString folderOf(const QString& file) {
    return QFileInfo(file).absolutePath() + u'/';
}

QString findProgram(const QString& name) {
    if (name.contains(u'/'))
        return QFileInfo(name).isExecutable() ? name : QString();
    return QStandardPaths::findExecutable(name);
}

struct ToolRun {
    bool started = false;
    bool timedOut = false;
    bool cancelled = false;
    int exitCode = -1;
    QString said; // the end of what it wrote on stdout and stderr
};

// Runs an outside program in a process group of its own, so that stopping it also stops what
// it started (LibreOffice's launcher starts the office as a child).
ToolRun runTool(const QString& program, const QStringList& args, const Settings& settings,
                Result& result) {
    ToolRun run;
    QProcess p;
    p.setProgram(program);
    p.setArguments(args);
    p.setProcessChannelMode(QProcess::MergedChannels);
    p.setStandardInputFile(QProcess::nullDevice());
    p.setChildProcessModifier([] { ::setpgid(0, 0); });
    QElapsedTimer clock;
    clock.start();
    p.start();
    if (!p.waitForStarted(30000)) {
        run.said = p.errorString();
        result.toolMs += clock.elapsed();
        return run;
    }
    run.started = true;
    const auto stop = [&p] {
        const qint64 pid = p.processId();
        if (pid > 0)
            ::kill(-pid_t(pid), SIGKILL);
        p.kill();
        p.waitForFinished(5000);
    };
    while (!p.waitForFinished(100)) {
        if (p.state() == QProcess::NotRunning)
            break;
        if (settings.cancel && settings.cancel->load()) {
            run.cancelled = true;
            stop();
            break;
        }
        if (clock.elapsed() > settings.timeoutMs) {
            run.timedOut = true;
            stop();
            break;
        }
    }
    result.toolMs += clock.elapsed();
    run.exitCode = p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
    // One line: what the program said, without the office's note about its Java helper.
    QStringList said;
    for (const QString& line : QString::fromLocal8Bit(p.readAll()).split(u'\n')) {
        if (!line.trimmed().isEmpty() && !line.contains(QLatin1String("javaldx")))
            said << line.trimmed();
    }
    run.said = said.join(QStringLiteral("; ")).right(kDetailChars);
    return run;
}

// Fills the failure of a run that did not end well; true when it did.
bool ranWell(const ToolRun& run, const QString& tool, const QString& package, Result& result) {
    result.tool = tool;
    result.package = package;
    if (!run.started) {
        result.failure = Failure::ToolFailed;
        result.detail = run.said;
        return false;
    }
    if (run.cancelled) {
        result.failure = Failure::Cancelled;
        return false;
    }
    if (run.timedOut) {
        result.failure = Failure::TimedOut;
        return false;
    }
    if (run.exitCode != 0) {
        result.failure = Failure::ToolFailed;
        result.detail =
            run.said.isEmpty() ? QStringLiteral("exit status %1").arg(run.exitCode) : run.said;
        return false;
    }
    return true;
}

bool parseOptions(const QString& options) {
    const QStringList tokens = options.split(u' ', Qt::SkipEmptyParts);
    QString format;
    for (qsizetype i = 0; i < tokens.size(); ++i) {
        const QString& t = tokens[i];
        if (t == QLatin1String("-c") && i + 1 < tokens.size())
            format = tokens[++i];
        else if (t.startsWith(QLatin1String("-c")) && t.size() > 2)
            format = t.mid(2);
        else if (t == QLatin1String("-body") || t.startsWith(QLatin1String("-tc")) ||
                 t.startsWith(QLatin1String("-DPI")))
            continue; // body only, table conversion, picture resolution: our tools' defaults
        else
            return false;
    }
    return format.compare(QLatin1String("HTML"), Qt::CaseInsensitive) == 0;
}

bool writeUtf8(const QString& path, const QString& text, Result& result) {
    QSaveFile out(path);
    const QByteArray bytes = text.toUtf8();
    if (!out.open(QIODevice::WriteOnly) || out.write(bytes) != bytes.size() || !out.commit()) {
        result.failure = Failure::CannotWrite;
        result.detail = QStringLiteral("%1: %2").arg(path, out.errorString());
        return false;
    }
    return true;
}

// The local pictures an HTML file shows: those mail programs cannot show become PNG.
void collectPictures(const QString& output, Result& result) {
    const TextFile::Decoded page = TextFile::read(output);
    if (!page.ok())
        return;
    const QString folder = folderOf(output);
    References::ReferenceWalker walker(page.text);
    std::vector<References::Edit> edits;
    QHash<QString, QString> converted;
    for (const References::Reference& ref : walker.references()) {
        const References::Resolved r = References::normalise(ref.value, folder);
        if (!r.isLocal() || !QFileInfo(r.path).isFile())
            continue;
        QString path = r.path;
        if (converted.contains(path)) {
            path = converted.value(path);
        } else {
            QFile f(path);
            const QByteArray bytes = f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
            if (!bytes.isEmpty() && !PictureFormat::showableInMail(bytes)) {
                if (const std::optional<QByteArray> png = PictureFormat::toPng(bytes)) {
                    const QString pngPath = PictureFormat::withPngExtension(path);
                    QSaveFile out(pngPath);
                    if (out.open(QIODevice::WriteOnly) && out.write(*png) == png->size() &&
                        out.commit()) {
                        converted.insert(path, pngPath);
                        path = pngPath;
                    }
                }
            }
        }
        if (path != r.path && ref.inSource())
            edits.push_back(References::Edit::of(ref, References::fileNameOf(path)));
        if (!result.pictures.contains(path))
            result.pictures << path;
    }
    if (!edits.empty()) {
        const QString text = walker.rewrite(edits);
        writeUtf8(output, text, result);
    }
}

void convertWord(const QString& source, const QString& output, const Settings& settings,
                 Result& result) {
    const QString program = findProgram(settings.soffice);
    result.tool = QStringLiteral("LibreOffice");
    result.package = QString::fromLatin1(kOfficePackage);
    if (program.isEmpty()) {
        result.failure = Failure::ToolMissing;
        return;
    }
    const QString folder = folderOf(output);
    // The office names its output after its input: a copy under the output's name gives
    // "WORD.html" and pictures "WORD_html_….png", whatever the document was called.
    const QString stem = QFileInfo(output).completeBaseName();
    const QString staged = folder + stem + u'.' + QFileInfo(source).suffix().toLower();
    const QString produced = folder + stem + QStringLiteral(".html");
    QFile::remove(staged);
    if (!QFile::copy(source, staged)) {
        result.failure = Failure::CannotWrite;
        result.detail = staged;
        return;
    }
    const bool ownProfile = settings.profileFolder.isEmpty();
    const QString profile =
        ownProfile ? folder + QStringLiteral(".office-profile") : settings.profileFolder;
    if (settings.step)
        settings.step(QStringLiteral("soffice"));
    const ToolRun run = runTool(program,
                                {QStringLiteral("-env:UserInstallation=") +
                                     QUrl::fromLocalFile(profile).toString(QUrl::FullyEncoded),
                                 QStringLiteral("--headless"), QStringLiteral("--invisible"),
                                 QStringLiteral("--nologo"), QStringLiteral("--norestore"),
                                 QStringLiteral("--nolockcheck"), QStringLiteral("--convert-to"),
                                 QStringLiteral("html:HTML (StarWriter)"),
                                 QStringLiteral("--outdir"), folder, staged},
                                settings, result);
    QFile::remove(staged);
    if (ownProfile)
        QDir(profile).removeRecursively();
    if (!ranWell(run, QStringLiteral("LibreOffice"), result.package, result))
        return;
    if (!QFileInfo(produced).isFile()) {
        result.failure = Failure::ToolFailed;
        result.detail = run.said;
        return;
    }
    if (produced != output) {
        QFile::remove(output);
        if (!QFile::rename(produced, output)) {
            result.failure = Failure::CannotWrite;
            result.detail = output;
            return;
        }
    }
    result.output = output;
    collectPictures(output, result);
}

QString headerBlock(const QString& subject) {
    return QStringLiteral("<meta http-equiv=\"Content-Type\" content=\"text/html; "
                          "charset=utf-8\">\r\n<title>") +
           subject.toHtmlEscaped() + QStringLiteral("</title>\r\n");
}

// The mail's document with its doctype, when it has one, on a line of its own, so the rebuild
// finds where the document starts.
QString documentLines(const QString& html) {
    const QString trimmed = html.trimmed();
    if (trimmed.startsWith(QLatin1String("<!doctype"), Qt::CaseInsensitive)) {
        const qsizetype end = trimmed.indexOf(u'>');
        if (end > 0)
            return trimmed.left(end + 1) + QStringLiteral("\r\n") + trimmed.mid(end + 1);
    }
    return trimmed;
}

void convertMail(const QString& source, const QString& output, Result& result) {
    result.tool = QStringLiteral("vmime");
    QFile in(source);
    if (!in.open(QIODevice::ReadOnly) || in.size() > kMaxMailBytes) {
        result.failure = Failure::Unreadable;
        result.detail =
            in.size() > kMaxMailBytes ? QStringLiteral("larger than 256 MB") : in.errorString();
        return;
    }
    const QByteArray bytes = in.readAll();
    const std::optional<MailImport::Mail> mail = MailImport::parse(bytes);
    if (!mail || mail->bodyFrom == MailImport::Mail::BodyFrom::Nothing) {
        result.failure = Failure::NoContent;
        return;
    }
    const QString folder = folderOf(output);
    const MailImport::Written written = MailImport::writeFiles(*mail, folder);
    if (!written.ok()) {
        result.failure = Failure::CannotWrite;
        result.detail = written.error;
        return;
    }
    if (!writeUtf8(output, headerBlock(mail->subject) + documentLines(mail->html), result))
        return;
    QString error;
    if (!RicostruisciOutlook(output, &error)) {
        result.failure = Failure::CannotWrite;
        result.detail = error;
        return;
    }
    result.output = output;
    result.subject = mail->subject;
    result.pictures = written.pictures;
    result.attachments = written.attachments;
}

void convertOutlook(const QString& source, const QString& output, const Settings& settings,
                    Result& result) {
    const QString program = findProgram(settings.msgconvert);
    result.tool = QStringLiteral("msgconvert");
    result.package = QString::fromLatin1(kOutlookPackage);
    if (program.isEmpty()) {
        result.failure = Failure::ToolMissing;
        return;
    }
    const QString eml =
        folderOf(output) + QFileInfo(output).completeBaseName() + QStringLiteral(".eml");
    QFile::remove(eml);
    if (settings.step)
        settings.step(QStringLiteral("msgconvert"));
    const ToolRun run =
        runTool(program, {QStringLiteral("--outfile"), eml, source}, settings, result);
    if (!ranWell(run, result.tool, result.package, result)) {
        QFile::remove(eml);
        return;
    }
    if (!QFileInfo(eml).isFile()) {
        result.failure = Failure::ToolFailed;
        result.detail = run.said;
        return;
    }
    if (settings.step)
        settings.step(QStringLiteral("mail"));
    convertMail(eml, output, result);
    QFile::remove(eml);
}

} // namespace

SourceType typeOf(const QString& path) {
    const QString ext = QFileInfo(path).suffix().toLower();
    if (ext == QLatin1String("doc") || ext == QLatin1String("docx") ||
        ext == QLatin1String("rtf") || ext == QLatin1String("odt"))
        return SourceType::WordDocument;
    if (ext == QLatin1String("eml"))
        return SourceType::Mail;
    if (ext == QLatin1String("msg"))
        return SourceType::OutlookMail;
    if (ext == QLatin1String("txt"))
        return SourceType::Text;
    if (ext == QLatin1String("htm") || ext == QLatin1String("html"))
        return SourceType::HtmlPage;
    return SourceType::Unknown;
}

Result Converti(const QString& source, const QString& output, const QString& options,
                const Settings& settings) {
    Result result;
    const SourceType type = typeOf(source);
    if (type != SourceType::WordDocument && type != SourceType::Mail &&
        type != SourceType::OutlookMail) {
        result.failure = Failure::UnknownType;
        result.detail = QFileInfo(source).suffix();
        return result;
    }
    if (!parseOptions(options)) {
        result.failure = Failure::BadOptions;
        result.detail = options;
        return result;
    }
    const QFileInfo info(source);
    if (!info.isFile() || !info.isReadable()) {
        result.failure = Failure::Unreadable;
        result.detail = source;
        return result;
    }
    if (!QDir().mkpath(folderOf(output))) {
        result.failure = Failure::CannotWrite;
        result.detail = folderOf(output);
        return result;
    }
    const QString absolute = info.absoluteFilePath();
    switch (type) {
    case SourceType::WordDocument:
        convertWord(absolute, output, settings, result);
        break;
    case SourceType::Mail:
        if (settings.step)
            settings.step(QStringLiteral("mail"));
        convertMail(absolute, output, result);
        break;
    default:
        convertOutlook(absolute, output, settings, result);
        break;
    }
    return result;
}

QString describe(const Result& r) {
    switch (r.failure) {
    case Failure::None:
        return QStringLiteral("converted");
    case Failure::UnknownType:
        return QStringLiteral("unknown file type \"%1\": expected .doc, .docx, .rtf, .odt, "
                              ".eml, .msg, .txt, .htm or .html")
            .arg(r.detail);
    case Failure::BadOptions:
        return QStringLiteral("unknown converter options \"%1\"").arg(r.detail);
    case Failure::Unreadable:
        return QStringLiteral("cannot read %1").arg(r.detail);
    case Failure::ToolMissing:
        return QStringLiteral("%1 is not installed (Debian package %2)").arg(r.tool, r.package);
    case Failure::ToolFailed:
        return QStringLiteral("%1 could not convert the file: %2").arg(r.tool, r.detail);
    case Failure::TimedOut:
        return QStringLiteral("%1 took too long and was stopped").arg(r.tool);
    case Failure::Cancelled:
        return QStringLiteral("%1 was stopped").arg(r.tool);
    case Failure::NoContent:
        return QStringLiteral("the mail holds no text or HTML part");
    case Failure::CannotWrite:
        return QStringLiteral("cannot write %1").arg(r.detail);
    }
    return {};
}

QString rebuildMailHtml(QStringView converted) {
    const QStringList lines = TextFile::splitLines(converted);
    qsizetype at = 0;
    QString header;
    const auto startsDocument = [](const QString& line) {
        const QString t = line.trimmed();
        return t.left(9).toUpper() == QLatin1String("<!DOCTYPE") ||
               t.left(6).toLower() == QLatin1String("<html ") ||
               t.left(6).toLower() == QLatin1String("<html>");
    };
    while (at < lines.size() && !startsDocument(lines[at]))
        header += lines[at++] + QStringLiteral("\r\n");
    if (at == lines.size()) {
        // No document start: the whole text is the document, with nothing to move.
        at = 0;
        header.clear();
    }
    QString document;
    for (; at < lines.size(); ++at) {
        document += lines[at] + QStringLiteral("\r\n");
        if (lines[at].trimmed().toLower() == QLatin1String("</html>"))
            break;
    }
    document.remove(QStringLiteral("<META content=\"MSHTML 6.00.2900.2802\" name=GENERATOR>"));
    document.remove(QStringLiteral("<STYLE></STYLE>"));
    document.remove(QStringLiteral("</HEAD>"), Qt::CaseInsensitive);
    if (document.contains(QStringLiteral("<HEAD>"), Qt::CaseInsensitive)) {
        document.replace(QStringLiteral("<HEAD>"), header + QStringLiteral("\r\n"),
                         Qt::CaseInsensitive);
    } else if (!header.isEmpty()) {
        // A mail without a head still gets the header block, right after its <html> tag.
        const qsizetype html = document.indexOf(QStringLiteral("<html"), 0, Qt::CaseInsensitive);
        const qsizetype end = html >= 0 ? document.indexOf(u'>', html) : -1;
        document.insert(end >= 0 ? end + 1 : 0, header);
    }
    document.replace(QStringLiteral("#msg_body {\r\n  border-width: 1px;\r\n"),
                     QStringLiteral("#msg_body {\r\n  border-width: 0px;\r\n"));
    return document;
}

bool RicostruisciOutlook(const QString& path, QString* error) {
    const TextFile::Decoded text = TextFile::read(path);
    if (!text.ok()) {
        if (error)
            *error = QStringLiteral("%1: %2").arg(path, TextFile::describe(text.error));
        return false;
    }
    if (!TextFile::writeText(path, rebuildMailHtml(text.text))) {
        if (error)
            *error = QStringLiteral("cannot write %1").arg(path);
        return false;
    }
    return true;
}

Imported importFile(const QString& source, const QString& workFolder, const Settings& settings) {
    Imported imported;
    imported.type = typeOf(source);
    Result& result = imported.result;
    const QString folder = withSlash(workFolder);
    switch (imported.type) {
    case SourceType::Unknown:
        result.failure = Failure::UnknownType;
        result.detail = QFileInfo(source).suffix();
        return imported;
    case SourceType::Text:
    case SourceType::HtmlPage: {
        const TextFile::Decoded text = TextFile::read(source);
        if (!text.ok()) {
            result.failure = Failure::Unreadable;
            result.detail = QStringLiteral("%1: %2").arg(source, TextFile::describe(text.error));
            return imported;
        }
        if (imported.type == SourceType::Text) {
            imported.html = TextImport::htmlFromText(text.text);
            imported.baseFolder = folder;
            return imported;
        }
        imported.html = text.text;
        imported.baseFolder = folderOf(source);
        for (const QString& path : References::objectList(imported.html, imported.baseFolder)) {
            if (QFileInfo(path).isFile())
                result.pictures << path;
        }
        return imported;
    }
    default:
        break;
    }
    const bool word = imported.type == SourceType::WordDocument;
    result = Converti(source, folder + QLatin1String(word ? kWordOutput : kMailOutput),
                      QLatin1String(word ? kWordOptions : kMailOptions), settings);
    if (!result.ok())
        return imported;
    const TextFile::Decoded text = TextFile::read(result.output);
    if (!text.ok()) {
        result.failure = Failure::Unreadable;
        result.detail = QStringLiteral("%1: %2").arg(result.output, TextFile::describe(text.error));
        return imported;
    }
    imported.html = text.text;
    imported.baseFolder = folder;
    return imported;
}

} // namespace quillora::DocumentConverter
