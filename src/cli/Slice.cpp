#include "cli/Commands.h"

#include "core/message/MessageFile.h"
#include "core/tools/ImageSlicer.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTextStream>

namespace quillora::cli {

namespace {

// A whole or decimal number, nothing else.
std::optional<float> number(const QString& text) {
    bool ok = false;
    const float value = text.trimmed().toFloat(&ok);
    return ok ? std::optional<float>(value) : std::nullopt;
}

// The dialog's minimums hold here too; say when a value is raised.
float atLeast(float value, float minimum, const char* what) {
    if (value > minimum)
        return value;
    if (value < minimum)
        printError(QStringLiteral("the %1 %2 is raised to the minimum of %3")
                       .arg(QLatin1String(what))
                       .arg(value)
                       .arg(minimum));
    return minimum;
}

} // namespace

int slice(const QStringList& args) {
    const QCommandLineOption outputOption({QStringLiteral("o"), QStringLiteral("output")},
                                          QStringLiteral("The message file to write (required)."),
                                          QStringLiteral("OUT"));
    const QCommandLineOption widthOption(
        QStringLiteral("width"),
        QStringLiteral("The width to scale the picture to, in pixels (600; at least 400)."),
        QStringLiteral("W"), QStringLiteral("600"));
    const QCommandLineOption heightOption(
        QStringLiteral("height"),
        QStringLiteral("The height of each slice, in pixels (100; at least 100)."),
        QStringLiteral("H"), QStringLiteral("100"));
    const QCommandLineOption subjectOption(QStringLiteral("subject"),
                                           QStringLiteral("The subject of the message."),
                                           QStringLiteral("S"));
    const Syntax syntax{
        QStringLiteral("slice"),
        QStringLiteral("IMAGE -o OUT [options]"),
        QStringLiteral("Make a message from one tall picture: scale it to the width, cut it into\n"
                       "horizontal PNG slices and stack them in a one-column table."),
        {outputOption, widthOption, heightOption, subjectOption},
        {{QStringLiteral("IMAGE"), QStringLiteral("The picture: .png, .gif, .jpg or .jpeg.")}}};
    QCommandLineParser parser;
    if (const std::optional<int> rc = parseCommand(parser, syntax, args))
        return *rc;
    const QString image = parser.positionalArguments().at(0);
    const QString output = parser.value(outputOption);
    if (output.isEmpty())
        return usageError(syntax, QStringLiteral("-o OUT is missing"));
    const std::optional<float> width = number(parser.value(widthOption));
    if (!width)
        return usageError(syntax, QStringLiteral("the width must be a number, not \"%1\"")
                                      .arg(parser.value(widthOption)));
    const std::optional<float> height = number(parser.value(heightOption));
    if (!height)
        return usageError(syntax, QStringLiteral("the height must be a number, not \"%1\"")
                                      .arg(parser.value(heightOption)));
    if (tools::checkSliceInput(image, 1, 1) == tools::SliceCheck::MissingFile) {
        printError(QStringLiteral("the picture %1 does not exist").arg(image));
        return kBadInput;
    }

    const QTemporaryDir work;
    if (!work.isValid()) {
        printError(QStringLiteral("cannot make a temporary folder: %1").arg(work.errorString()));
        return kBadInput;
    }
    const QString folder = work.path() + u'/';
    int lastTenth = -1;
    const tools::SliceResult r = tools::sliceImage(
        image, atLeast(*width, tools::kMinWidth, "width"),
        atLeast(*height, tools::kMinSliceHeight, "height"), folder, [&](int done, int total) {
            const int tenth = total > 0 ? done * 10 / total : 10;
            if (tenth != lastTenth) {
                lastTenth = tenth;
                QTextStream(stderr) << "slicing: " << done << "/" << total << Qt::endl;
            }
            return true;
        });
    if (!r.ok()) {
        printError(QStringLiteral("%1: %2").arg(image, r.error));
        return kBadInput;
    }

    QFile page(r.pageFile);
    if (!page.open(QIODevice::ReadOnly)) {
        printError(QStringLiteral("cannot read %1: %2").arg(r.pageFile, page.errorString()));
        return kBadInput;
    }
    MessageDocument doc;
    doc.subject = parser.value(subjectOption);
    doc.body = QString::fromUtf8(page.readAll());
    MessageFile::SaveOptions options;
    options.baseFolder = folder;
    const MessageFile::SaveResult saved = MessageFile::SalvaMessaggio(doc, output, options);
    if (!saved.ok()) {
        printError(QStringLiteral("cannot save %1: %2").arg(saved.path, saved.description));
        return kBadInput;
    }
    printOut(QStringLiteral("slices: %1\nscaled: %2 x %3\n")
                 .arg(r.slices.size())
                 .arg(r.scaledWidth)
                 .arg(r.scaledHeight));
    return kOk;
}

} // namespace quillora::cli
