#include "core/app/Folders.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>

namespace quillora {

QString withTrailingSlash(const QString& folder) {
    if (folder.endsWith(u'/') || folder.endsWith(u'\\'))
        return folder;
    return folder + u'/';
}

Folders Folders::derive(const QString& appPath, const QString& appDataAllUser) {
    Folders f;
    f.appPath = withTrailingSlash(appPath);
    f.appDataAllUser = withTrailingSlash(appDataAllUser);
    f.pathFileImp = f.appDataAllUser + QLatin1String(kSharedDataSubfolder);
    f.appMemory = f.pathFileImp + QStringLiteral("Memory/");
    f.appTemplate = f.pathFileImp + QStringLiteral("Template/");
    f.appSocial = f.pathFileImp + QStringLiteral("Icone Social/");
    return f;
}

QString GetPercorsoTemporaneo(const QString& pathFileImp, const QDateTime& now) {
    const QString stamp = now.toString(QStringLiteral("yyyyMMdd_HHmmss"));
    const QString elaboration = pathFileImp + QStringLiteral("Elaboration");
    QDir dir;
    if (!QFileInfo(elaboration).isDir() && !dir.mkpath(elaboration))
        return QString();
    const QString folder = elaboration + u'/' + stamp;
    if (!QFileInfo(folder).isDir() && !dir.mkpath(folder))
        return QString();
    return folder + u'/';
}

QString GetPercorsoTemporaneo(const QString& pathFileImp) {
    return GetPercorsoTemporaneo(pathFileImp, QDateTime::currentDateTime());
}

QString NewWorkFolderBeside(const QString& pathFileImp, const QString& current) {
    QString folder = GetPercorsoTemporaneo(pathFileImp);
    for (int n = 1; !folder.isEmpty() && folder == current; ++n) {
        folder = current.chopped(1) + QStringLiteral("_%1/").arg(n);
        if (!QDir().mkpath(folder))
            folder.clear();
    }
    return folder;
}

void CancellaPercorsoTemporaneo(const QString& folder) {
    QString f = folder;
    if (f.endsWith(u'/') || f.endsWith(u'\\'))
        f.chop(1);
    if (f.isEmpty())
        return;
    QFileInfo info(f);
    if (info.isDir() && !info.isSymLink())
        QDir(f).removeRecursively();
}

QString CheckDosFielName(const QString& path) {
    const qsizetype cut = std::max(path.lastIndexOf(u'/'), path.lastIndexOf(u'\\'));
    const QString folder = path.left(cut + 1);
    const QString name = path.mid(cut + 1);
    if (name.isEmpty() || QFileInfo::exists(path))
        return path;
    const QDir dir(folder.isEmpty() ? QStringLiteral(".") : folder);
    const QStringList entries =
        dir.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    for (const QString& entry : entries) {
        if (entry.compare(name, Qt::CaseInsensitive) == 0)
            return folder + entry;
    }
    return path;
}

QString CommandLineFileName(const QStringList& arguments) {
    QString line = arguments.join(u' ');
    line.remove(u'"');
    return line;
}

} // namespace quillora
