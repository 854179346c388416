#include "core/tools/TemplateStore.h"

#include <QDir>

namespace quillora::TemplateStore {

const QStringList& categories() {
    static const QStringList names{QStringLiteral("Professional"), QStringLiteral("Simple")};
    return names;
}

bool isThumbnail(QStringView fileName) {
    const qsizetype dot = fileName.indexOf(u'.');
    return dot >= 0 && fileName.mid(dot + 1).compare(u"jpg", Qt::CaseInsensitive) == 0;
}

QString templateName(const QString& thumbnailPath) {
    const qsizetype slash =
        std::max(thumbnailPath.lastIndexOf(u'/'), thumbnailPath.lastIndexOf(u'\\'));
    QString file = thumbnailPath.mid(slash + 1);
    const qsizetype dot = file.lastIndexOf(u'.');
    return dot >= 0 ? file.left(dot) : file;
}

QString pagePath(const QString& thumbnailPath) {
    const qsizetype slash =
        std::max(thumbnailPath.lastIndexOf(u'/'), thumbnailPath.lastIndexOf(u'\\'));
    const QString folder = thumbnailPath.left(slash + 1);
    const QString name = templateName(thumbnailPath);
    return folder + name + u'/' + name + QStringLiteral(".html");
}

std::vector<Entry> list(const QString& templateFolder, const QString& category) {
    std::vector<Entry> out;
    QString root = templateFolder;
    if (!root.isEmpty() && !root.endsWith(u'/'))
        root += u'/';
    const QString folder = root + category + u'/';
    const QStringList names = QDir(folder).entryList(QDir::Files, QDir::Unsorted);
    for (const QString& name : names) {
        if (!isThumbnail(name))
            continue;
        const QString thumbnail = folder + name;
        out.push_back({category, templateName(thumbnail), thumbnail, pagePath(thumbnail)});
    }
    return out;
}

std::vector<Entry> listAll(const QString& templateFolder) {
    std::vector<Entry> out;
    for (const QString& category : categories()) {
        std::vector<Entry> some = list(templateFolder, category);
        out.insert(out.end(), some.begin(), some.end());
    }
    return out;
}

} // namespace quillora::TemplateStore
