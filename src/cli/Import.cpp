#include "cli/Commands.h"

#include "core/message/DocumentConverter.h"
#include "core/message/MessageFile.h"

#include <QFileInfo>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTextStream>

namespace quillora::cli {

int import(const QStringList& args) {
    const QCommandLineOption outputOption({QStringLiteral("o"), QStringLiteral("output")},
                                          QStringLiteral("The message file to write (required)."),
                                          QStringLiteral("OUT"));
    const QCommandLineOption subjectOption(
        QStringLiteral("subject"),
        QStringLiteral("The subject of the message (a mail's own subject otherwise)."),
        QStringLiteral("S"));
    const Syntax syntax{
        QStringLiteral("import"),
        QStringLiteral("FILE -o OUT [--subject S]"),
        QStringLiteral("Make a message from a document (.doc, .docx, .rtf, .odt, through "
                       "LibreOffice),\na saved mail (.eml; .msg through msgconvert), a text "
                       "file (.txt) or an HTML page\n(.htm, .html), embedding every picture "
                       "it shows; a mail's attachments stay\nattachments. Prints the number "
                       "of pictures."),
        {outputOption, subjectOption},
        {{QStringLiteral("FILE"), QStringLiteral("The file to import.")}}};
    QCommandLineParser parser;
    if (const std::optional<int> rc = parseCommand(parser, syntax, args))
        return *rc;
    const QString source = parser.positionalArguments().at(0);
    const QString output = parser.value(outputOption);
    if (output.isEmpty())
        return usageError(syntax, QStringLiteral("-o OUT is missing"));
    const QTemporaryDir work;
    if (!work.isValid()) {
        printError(QStringLiteral("cannot make a temporary folder: %1").arg(work.errorString()));
        return kBadInput;
    }
    DocumentConverter::Settings settings;
    // A profile kept between runs spares LibreOffice the seconds of making a new one.
    const QString cache = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation);
    if (!cache.isEmpty())
        settings.profileFolder = cache + QStringLiteral("/quillora/office-profile");
    settings.step = [](const QString& step) {
        QTextStream(stderr) << "converting: " << step << Qt::endl;
    };
    const DocumentConverter::Imported imported =
        DocumentConverter::importFile(source, work.path(), settings);
    if (!imported.ok()) {
        printError(
            QStringLiteral("%1: %2").arg(source, DocumentConverter::describe(imported.result)));
        return kBadInput;
    }
    MessageDocument doc;
    doc.subject =
        parser.isSet(subjectOption) ? parser.value(subjectOption) : imported.result.subject;
    doc.body = imported.html;
    doc.attachments = imported.result.attachments;
    MessageFile::SaveOptions options;
    options.baseFolder = imported.baseFolder;
    const MessageFile::SaveResult saved = MessageFile::SalvaMessaggio(doc, output, options);
    if (!saved.ok()) {
        printError(QStringLiteral("cannot save %1: %2").arg(saved.path, saved.description));
        return kBadInput;
    }
    printOut(QStringLiteral("pictures: %1\nattachments: %2\n")
                 .arg(imported.result.pictures.size())
                 .arg(imported.result.attachments.size()));
    return kOk;
}

} // namespace quillora::cli
