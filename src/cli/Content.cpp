// The snippet memory and the templates from the command line.
#include "cli/Commands.h"
#include "cli/Environment.h"

#include "core/app/ProgramFolders.h"
#include "core/app/Provisioning.h"
#include "core/app/TextFile.h"
#include "core/tools/SnippetStore.h"
#include "core/tools/TemplateStore.h"

#include <QDir>
#include <QFileInfo>
#include <QLocale>
#include <algorithm>

namespace quillora::cli {

namespace {

// The folders, after a first start has laid down what it must.
Folders provisionedFolders() {
    const Folders folders = programFolders();
    Provisioning::ensureDataFolders(folders, ProgramFolders::defaultsFolder(folders),
                                    QLocale::system().name());
    return folders;
}

// "00000012" for 00000012.mem; other names as they are, without ".mem".
QString numberOf(const QString& fileName) {
    return fileName.left(fileName.size() - 4);
}

// A snippet named by its number ("12" or "00000012") or by its file name without ".mem".
std::optional<QString> snippetFile(const SnippetStore& store, const QString& given) {
    bool ok = false;
    const int n = given.toInt(&ok);
    if (ok && n >= 0 && n <= 32767) {
        const QString name = SnippetStore::fileNameFor(qint16(n));
        if (QFileInfo::exists(store.folder() + name))
            return name;
    }
    for (const SnippetRow& row : store.list()) {
        if (numberOf(row.fileName) == given)
            return row.fileName;
    }
    return std::nullopt;
}

const Positional kNumber{QStringLiteral("N"),
                         QStringLiteral("The snippet's number, as snippets list shows it.")};

int listSnippets(const QStringList& args) {
    const Syntax syntax{QStringLiteral("snippets list"),
                        QString(),
                        QStringLiteral("List the stored snippets, one a line: number and title."),
                        {},
                        {}};
    QCommandLineParser parser;
    if (const std::optional<int> rc = parseCommand(parser, syntax, args))
        return *rc;
    const SnippetStore store(provisionedFolders().appMemory);
    std::vector<SnippetRow> rows = store.list();
    std::sort(rows.begin(), rows.end(),
              [](const SnippetRow& a, const SnippetRow& b) { return a.fileName < b.fileName; });
    QString out;
    for (const SnippetRow& row : rows)
        out += numberOf(row.fileName) + u'\t' + row.title + u'\n';
    printOut(out);
    return kOk;
}

int addSnippet(const QStringList& args) {
    const QCommandLineOption title(QStringLiteral("title"), QStringLiteral("The title (required)."),
                                   QStringLiteral("T"));
    const QCommandLineOption text(QStringLiteral("text"), QStringLiteral("The text, or HTML."),
                                  QStringLiteral("S"));
    const QCommandLineOption file(QStringLiteral("file"),
                                  QStringLiteral("Take the text from a file (UTF-8, UTF-16 or "
                                                 "Windows-1252)."),
                                  QStringLiteral("F"));
    const Syntax syntax{QStringLiteral("snippets add"),
                        QStringLiteral("--title T (--text S | --file F)"),
                        QStringLiteral("Store a snippet and print its number. Line ends are kept "
                                       "as CR LF, which become <BR> when it is dropped."),
                        {title, text, file},
                        {}};
    QCommandLineParser parser;
    if (const std::optional<int> rc = parseCommand(parser, syntax, args))
        return *rc;
    if (!parser.isSet(title))
        return usageError(syntax, QStringLiteral("--title is needed"));
    if (parser.isSet(text) == parser.isSet(file))
        return usageError(syntax, QStringLiteral("give either --text or --file"));
    const QString name = parser.value(title);
    if (name.contains(u'\r') || name.contains(u'\n')) {
        printError(QStringLiteral("a title is one line"));
        return kBadInput;
    }
    QString body = parser.value(text);
    if (parser.isSet(file)) {
        const TextFile::Decoded d = TextFile::read(parser.value(file), 64 * 1024 * 1024);
        if (!d.ok()) {
            printError(
                QStringLiteral("%1: %2").arg(parser.value(file), TextFile::describe(d.error)));
            return kBadInput;
        }
        body = d.text;
    }
    const SnippetStore store(provisionedFolders().appMemory);
    const QString stored = store.add(name, SnippetStore::typedText(body));
    if (!store.read(stored)) {
        printError(QStringLiteral("cannot write %1")
                       .arg(QDir::toNativeSeparators(store.folder() + stored)));
        return kBadInput;
    }
    printOut(numberOf(stored) + u'\n');
    return kOk;
}

int showSnippet(const QStringList& args) {
    const Syntax syntax{QStringLiteral("snippets show"),
                        QStringLiteral("N"),
                        QStringLiteral("Print a snippet's text exactly as stored."),
                        {},
                        {kNumber}};
    QCommandLineParser parser;
    if (const std::optional<int> rc = parseCommand(parser, syntax, args))
        return *rc;
    const SnippetStore store(provisionedFolders().appMemory);
    const QString given = parser.positionalArguments().at(0);
    const std::optional<QString> name = snippetFile(store, given);
    const auto snippet = name ? store.read(*name) : std::nullopt;
    if (!snippet) {
        printError(QStringLiteral("no readable snippet %1").arg(given));
        return kBadInput;
    }
    printOut(snippet->text);
    return kOk;
}

int removeSnippet(const QStringList& args) {
    const Syntax syntax{QStringLiteral("snippets remove"),
                        QStringLiteral("N"),
                        QStringLiteral("Delete a snippet. Its number is never handed out again "
                                       "until the counter wraps."),
                        {},
                        {kNumber}};
    QCommandLineParser parser;
    if (const std::optional<int> rc = parseCommand(parser, syntax, args))
        return *rc;
    const SnippetStore store(provisionedFolders().appMemory);
    const QString given = parser.positionalArguments().at(0);
    const std::optional<QString> name = snippetFile(store, given);
    if (!name) {
        printError(QStringLiteral("no snippet %1").arg(given));
        return kBadInput;
    }
    if (!store.remove(*name)) {
        printError(QStringLiteral("cannot delete %1")
                       .arg(QDir::toNativeSeparators(store.folder() + *name)));
        return kBadInput;
    }
    return kOk;
}

int listTemplates(const QStringList& args) {
    const Syntax syntax{QStringLiteral("templates list"),
                        QString(),
                        QStringLiteral("List the templates, one a line: category, name and the "
                                       "page a new message starts from."),
                        {},
                        {}};
    QCommandLineParser parser;
    if (const std::optional<int> rc = parseCommand(parser, syntax, args))
        return *rc;
    QString out;
    for (const TemplateStore::Entry& e : TemplateStore::listAll(provisionedFolders().appTemplate))
        out += e.category + u'\t' + e.name + u'\t' + QDir::toNativeSeparators(e.page) + u'\n';
    printOut(out);
    return kOk;
}

struct Subcommand {
    const char* name;
    int (*run)(const QStringList& args);
};

int dispatch(const Syntax& syntax, const QStringList& args,
             std::initializer_list<Subcommand> subs) {
    QCommandLineParser parser;
    if (const std::optional<int> rc = parseCommand(parser, syntax, args))
        return *rc;
    const QStringList given = parser.positionalArguments();
    for (const Subcommand& sub : subs) {
        if (given.first() == QLatin1String(sub.name))
            return sub.run(given.mid(1));
    }
    return usageError(
        syntax, QStringLiteral("unknown %1 command \"%2\"").arg(syntax.command, given.first()));
}

} // namespace

int snippets(const QStringList& args) {
    const Syntax syntax{
        QStringLiteral("snippets"),
        QStringLiteral("list|add|show|remove [ARGUMENTS]"),
        QStringLiteral("Manage the snippet memory, kept in the shared data folder.\n"
                       "\"quillora-cli snippets COMMAND --help\" shows the options of one."),
        {},
        {{QStringLiteral("COMMAND"), QStringLiteral("list, add, show or remove.")}},
        true};
    return dispatch(syntax, args,
                    {{"list", listSnippets},
                     {"add", addSnippet},
                     {"show", showSnippet},
                     {"remove", removeSnippet}});
}

int templates(const QStringList& args) {
    const Syntax syntax{QStringLiteral("templates"),
                        QStringLiteral("list"),
                        QStringLiteral("The templates a new message can start from."),
                        {},
                        {{QStringLiteral("COMMAND"), QStringLiteral("list.")}},
                        true};
    return dispatch(syntax, args, {{"list", listTemplates}});
}

} // namespace quillora::cli
