#include "core/app/Provisioning.h"

#include "core/app/AccountStore.h"
#include "core/app/TextFile.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <unistd.h>

namespace quillora::Provisioning {

namespace {

void makeFolder(const QString& path, Report& report) {
    if (QFileInfo(path).isDir())
        return;
    if (QDir().mkpath(path))
        report.created << path;
    else
        report.failed << path + QStringLiteral(": cannot create the folder");
}

// Copies every file under `from` that is missing under `to`.
void copyMissing(const QString& from, const QString& to, Report& report) {
    if (!QFileInfo(from).isDir())
        return;
    QDirIterator it(from, QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString source = it.next();
        const QString target = to + QDir(from).relativeFilePath(source);
        const QFileInfo info = it.fileInfo();
        if (info.isDir()) {
            makeFolder(target, report);
        } else if (!QFileInfo::exists(target)) {
            QDir().mkpath(QFileInfo(target).absolutePath());
            if (QFile::copy(source, target)) {
                QFile::setPermissions(target, QFile::ReadOwner | QFile::WriteOwner |
                                                  QFile::ReadGroup | QFile::ReadOther);
                report.created << target;
            } else {
                report.failed << target + QStringLiteral(": cannot copy from ") + source;
            }
        }
    }
}

} // namespace

QString languageForLocale(const QString& localeName) {
    const QString lang = localeName.left(2).toLower();
    if (lang == QLatin1String("it"))
        return QStringLiteral("Italiano");
    if (lang == QLatin1String("es"))
        return QStringLiteral("Español");
    return QStringLiteral("English");
}

Report ensureDataFolders(const Folders& folders, const QString& defaults,
                         const QString& localeName) {
    Report report;
    makeFolder(folders.pathFileImp, report);
    copyMissing(withTrailingSlash(defaults), folders.pathFileImp, report);
    for (const QString& sub :
         {folders.appMemory, folders.appTemplate + QStringLiteral("Professional/"),
          folders.appTemplate + QStringLiteral("Simple/"), folders.appSocial,
          folders.pathFileImp + QStringLiteral("SPAMASS/")})
        makeFolder(sub, report);

    const QString db = folders.accountDatabase();
    if (!QFileInfo::exists(db) && QFileInfo(folders.pathFileImp).isDir()) {
        const QString connection = QStringLiteral("quillora-provisioning");
        const StoreResult r = AccountStore::open(db, connection);
        AccountStore::close(connection);
        if (r.ok())
            report.created << db;
        else
            report.failed << db + QStringLiteral(": ") + r.error;
    }

    const QString choice = folders.languageChoiceFile();
    if (!QFileInfo::exists(choice)) {
        if (TextFile::writeLines(choice, {languageForLocale(localeName)}))
            report.created << choice;
        else
            report.failed << choice + QStringLiteral(": cannot write the language choice");
    }
    return report;
}

int userKind(const QString& systemFolder) {
    const QByteArray path = QFile::encodeName(systemFolder);
    return ::access(path.constData(), W_OK) == 0 ? 0 : 1;
}

} // namespace quillora::Provisioning
