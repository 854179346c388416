#include "gui/app/ThemeIcons.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QIconEngine>
#include <QPainter>
#include <QPixmap>
#include <QPixmapCache>
#include <QSaveFile>
#include <QStandardPaths>
#include <QStyle>
#include <QStyleOption>

#include <optional>

namespace quillora::gui {

namespace {

std::optional<QString>& folderSetting() {
    static std::optional<QString> folder;
    return folder;
}

// Each theme's folder in the cache, or an empty text, by cache folder, theme and search paths.
QHash<QString, QString>& themeFolders() {
    static QHash<QString, QString> folders;
    return folders;
}

// The current theme's folder in the cache, or empty when pictures stay in memory only.
QString themeFolder() {
    const QString base = themeIconCacheFolder();
    const QString theme = QIcon::themeName();
    if (base.isEmpty() || theme.isEmpty())
        return QString();
    QHash<QString, QString>& known = themeFolders();
    const QString key = base + u'\n' + theme + u'\n' + QIcon::themeSearchPaths().join(u'\n');
    if (const auto found = known.constFind(key); found != known.cend())
        return *found;
    QString folder;
    for (const QString& root : QIcon::themeSearchPaths()) {
        const QFileInfo index(root + u'/' + theme + QStringLiteral("/index.theme"));
        if (index.exists()) {
            folder = QStringLiteral("%1/%2-%3-%4")
                         .arg(base, theme)
                         .arg(index.lastModified().toMSecsSinceEpoch())
                         .arg(QLatin1String(qVersion()));
            break;
        }
    }
    known.insert(key, folder);
    return folder;
}

// Only plain names become file names.
bool storable(const QString& name) {
    return !name.isEmpty() && !name.startsWith(u'.') && !name.contains(u'/') &&
           !name.contains(u'\\');
}

QString sizeText(const QSize& size) {
    return QStringLiteral("%1x%2").arg(size.width()).arg(size.height());
}

class CachedThemeIconEngine final : public QIconEngine {
public:
    explicit CachedThemeIconEngine(QString name) : m_name(std::move(name)) {}

    QIconEngine* clone() const override { return new CachedThemeIconEngine(m_name); }
    QString key() const override { return QStringLiteral("QuilloraThemeIcon"); }
    QString iconName() override { return m_name; }

    bool isNull() override {
        const QString folder = diskFolder();
        if (!folder.isEmpty() && QFileInfo::exists(folder))
            return false;
        return theme().isNull();
    }

    QSize actualSize(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        return pixmap(size, mode, state).size();
    }

    QList<QSize> availableSizes(QIcon::Mode mode, QIcon::State state) override {
        return theme().availableSizes(mode, state);
    }

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode,
               QIcon::State state) override {
        const qreal ratio = painter->device() ? painter->device()->devicePixelRatio() : 1.0;
        QPixmap pm = pixmap(rect.size() * ratio, mode, state);
        pm.setDevicePixelRatio(ratio);
        painter->drawPixmap(rect, pm);
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        if (size.isEmpty())
            return QPixmap();
        if (state != QIcon::Off)
            return theme().pixmap(size, 1.0, mode, state);
        const QPixmap normal = normalPixmap(size);
        if (normal.isNull() || mode == QIcon::Normal)
            return normal;
        // As Qt makes the other modes of a drawn icon, for the palette of the moment.
        const QString key = QStringLiteral("quillora-icon-mode/%1/%2/%3")
                                .arg(normal.cacheKey())
                                .arg(int(mode))
                                .arg(QGuiApplication::palette().cacheKey());
        QPixmap made;
        if (QPixmapCache::find(key, &made))
            return made;
        QStyleOption option;
        option.palette = QGuiApplication::palette();
        made = QApplication::style()->generatedIconPixmap(mode, normal, &option);
        QPixmapCache::insert(key, made);
        return made;
    }

private:
    QIcon& theme() {
        if (!m_theme)
            m_theme = QIcon::fromTheme(m_name);
        return *m_theme;
    }

    // The icon's folder in the cache, or empty.
    QString diskFolder() const {
        const QString folder = storable(m_name) ? themeFolder() : QString();
        return folder.isEmpty() ? folder : folder + u'/' + m_name;
    }

    QPixmap normalPixmap(const QSize& size) {
        const QString memoryKey = QStringLiteral("quillora-icon/%1/%2/%3")
                                      .arg(QIcon::themeName(), m_name, sizeText(size));
        QPixmap pm;
        if (QPixmapCache::find(memoryKey, &pm))
            return pm;
        const QString folder = diskFolder();
        const QString file =
            folder.isEmpty() ? folder : folder + u'/' + sizeText(size) + QStringLiteral(".png");
        if (!file.isEmpty() && pm.load(file, "PNG")) {
            QPixmapCache::insert(memoryKey, pm);
            return pm;
        }
        pm = theme().pixmap(size, 1.0);
        if (pm.isNull())
            return pm;
        QPixmapCache::insert(memoryKey, pm);
        // A cache that cannot be written only means drawing again next time.
        if (!file.isEmpty() && QDir().mkpath(folder)) {
            QSaveFile out(file);
            if (out.open(QIODevice::WriteOnly) && pm.save(&out, "PNG"))
                out.commit();
        }
        return pm;
    }

    QString m_name;
    std::optional<QIcon> m_theme;
};

} // namespace

QIcon themeIcon(const QString& name) {
    return QIcon(new CachedThemeIconEngine(name));
}

void setThemeIconCacheFolder(const QString& folder) {
    folderSetting() = folder;
    themeFolders().clear();
}

QString themeIconCacheFolder() {
    if (!folderSetting()) {
        const QString cache = QStandardPaths::writableLocation(QStandardPaths::CacheLocation);
        folderSetting() = cache.isEmpty() ? cache : cache + QStringLiteral("/icons");
    }
    return *folderSetting();
}

} // namespace quillora::gui
