#include "gui/app/ThemeIcons.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QIconEngine>
#include <QPainter>
#include <QPixmap>
#include <QSaveFile>
#include <QStandardPaths>
#include <QStyle>
#include <QStyleOption>

#include <cstring>
#include <map>
#include <optional>
#include <tuple>
#include <utility>

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

// A kept picture is its pixels as they are in memory, after a small header: reading one back is a
// copy, with no decoder to find (looking for one loads every picture plugin Qt has) and none to
// run.
constexpr char kPictureSuffix[] = ".argb";
constexpr char kPictureMagic[4] = {'Q', 'I', 'C', '1'};
constexpr int kLargestKept = 1024;

struct PictureHeader {
    char magic[4];
    quint32 width;
    quint32 height;
};

QImage readPicture(const QString& file) {
    QFile in(file);
    if (!in.open(QIODevice::ReadOnly))
        return QImage();
    PictureHeader header;
    if (in.read(reinterpret_cast<char*>(&header), sizeof header) != qint64(sizeof header) ||
        std::memcmp(header.magic, kPictureMagic, sizeof kPictureMagic) != 0 || header.width == 0 ||
        header.height == 0 || header.width > kLargestKept || header.height > kLargestKept)
        return QImage();
    QImage image(int(header.width), int(header.height), QImage::Format_ARGB32_Premultiplied);
    // Lines of 32-bit pixels are never padded.
    const qint64 bytes = qint64(image.sizeInBytes());
    if (image.isNull() || in.size() != qint64(sizeof header) + bytes ||
        in.read(reinterpret_cast<char*>(image.bits()), bytes) != bytes)
        return QImage();
    return image;
}

void writePicture(const QString& file, const QImage& picture) {
    const QImage image = picture.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    if (image.width() > kLargestKept || image.height() > kLargestKept)
        return;
    PictureHeader header;
    std::memcpy(header.magic, kPictureMagic, sizeof kPictureMagic);
    header.width = quint32(image.width());
    header.height = quint32(image.height());
    QSaveFile out(file);
    if (out.open(QIODevice::WriteOnly) &&
        out.write(reinterpret_cast<const char*>(&header), sizeof header) == qint64(sizeof header) &&
        out.write(reinterpret_cast<const char*>(image.constBits()), image.sizeInBytes()) ==
            image.sizeInBytes())
        out.commit();
}

// Pictures are kept by the icon itself, for the current theme: looking them up is on every paint
// and every size hint of a button.
class CachedThemeIconEngine final : public QIconEngine {
public:
    explicit CachedThemeIconEngine(QString name) : m_name(std::move(name)) {}

    QIconEngine* clone() const override { return new CachedThemeIconEngine(m_name); }
    QString key() const override { return QStringLiteral("QuilloraThemeIcon"); }
    QString iconName() override { return m_name; }

    bool isNull() override {
        followTheme();
        if (!m_null)
            m_null = lacking();
        return *m_null;
    }

    // As for a theme icon: the size of the normal picture, whatever the mode.
    QSize actualSize(const QSize& size, QIcon::Mode, QIcon::State) override {
        return normalPixmap(size).size();
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
        // A theme has one picture for both states (a checked button shows the same one).
        Q_UNUSED(state);
        const QPixmap normal = normalPixmap(size);
        if (normal.isNull() || mode == QIcon::Normal)
            return normal;
        // As Qt makes the other modes of a drawn icon, for the palette of the moment.
        const qint64 palette = QGuiApplication::palette().cacheKey();
        const auto key = std::make_tuple(size.width(), size.height(), int(mode), palette);
        if (const auto found = m_made.find(key); found != m_made.end())
            return found->second;
        QStyleOption option;
        option.palette = QGuiApplication::palette();
        const QPixmap made = QApplication::style()->generatedIconPixmap(mode, normal, &option);
        m_made.emplace(key, made);
        return made;
    }

private:
    QIcon& theme() {
        if (!m_theme)
            m_theme = QIcon::fromTheme(m_name);
        return *m_theme;
    }

    // Pictures of another theme are dropped when the theme changes.
    void followTheme() {
        const QString current = QIcon::themeName();
        if (current == m_themeName)
            return;
        m_themeName = current;
        m_normal.clear();
        m_made.clear();
        m_null.reset();
    }

    // Whether the theme lacks the name. Looking it up reads the theme's index, which is large,
    // so the answer is kept in the cache: an icon's folder means the theme has the name (the
    // folder is there once a picture was kept), a file in ".lacking" that it has not.
    bool lacking() {
        const QString folder = diskFolder();
        if (folder.isEmpty())
            return theme().isNull();
        const QString marker = themeFolder() + QStringLiteral("/.lacking/") + m_name;
        if (QFileInfo::exists(folder))
            return false;
        if (QFileInfo::exists(marker))
            return true;
        const bool null = theme().isNull();
        // A cache that cannot be written only means looking it up again next time.
        if (!null)
            QDir().mkpath(folder);
        else if (QDir().mkpath(QFileInfo(marker).path()))
            QFile(marker).open(QIODevice::WriteOnly);
        return null;
    }

    // The icon's folder in the cache, or empty.
    QString diskFolder() const {
        const QString folder = storable(m_name) ? themeFolder() : QString();
        return folder.isEmpty() ? folder : folder + u'/' + m_name;
    }

    QPixmap normalPixmap(const QSize& size) {
        followTheme();
        const auto key = std::make_pair(size.width(), size.height());
        if (const auto found = m_normal.find(key); found != m_normal.end())
            return found->second;
        const QString folder = diskFolder();
        const QString file = folder.isEmpty()
                                 ? folder
                                 : folder + u'/' + sizeText(size) + QLatin1String(kPictureSuffix);
        QImage kept = file.isEmpty() ? QImage() : readPicture(file);
        QPixmap pm;
        if (!kept.isNull()) {
            pm = QPixmap::fromImage(std::move(kept));
        } else {
            pm = theme().pixmap(size, 1.0);
            // A cache that cannot be written only means drawing again next time.
            if (!pm.isNull() && !file.isEmpty() && QDir().mkpath(folder))
                writePicture(file, pm.toImage());
        }
        m_normal.emplace(key, pm);
        return pm;
    }

    QString m_name;
    std::optional<QIcon> m_theme;
    QString m_themeName;
    std::optional<bool> m_null;
    std::map<std::pair<int, int>, QPixmap> m_normal;
    std::map<std::tuple<int, int, int, qint64>, QPixmap> m_made;
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
