#include "core/tools/SocialLinks.h"

#include "core/app/TextFile.h"

namespace quillora::SocialLinks {

const std::array<Network, kNetworks>& networks() {
    static const std::array<Network, kNetworks> table{{
        {" Facebook", "facebook", "f", 0x3b5998},
        {" Twitter", "twitter", "t", 0x1da1f2},
        {" Google+", "google", "g+", 0xdb4437},
        {" LinkedIn", "linkedin", "in", 0x0077b5},
        {" Youtube", "youtube", "\u25B6", 0xe62117},
        {" Flickr", "flickr", "fl", 0xff0084},
        {" Tumblr", "tumblr", "t", 0x35465c},
        {" Vimeo", "vimeo", "v", 0x1ab7ea},
        {" Myspace", "myspace", "my", 0x313131},
    }};
    return table;
}

const QStringList& sizes() {
    static const QStringList list{QStringLiteral("16x16"), QStringLiteral("32x32"),
                                  QStringLiteral("48x48"), QStringLiteral("64x64")};
    return list;
}

QString iconFileName(int design, const QString& size, int network, const QString& extension) {
    return QStringLiteral("%1_%2_%3%4")
        .arg(design, 2, 10, QLatin1Char('0'))
        .arg(size, QString::fromLatin1(networks()[size_t(network)].word), extension);
}

QString resized(const QString& tag, int sizeIndex) {
    const QString size =
        sizeIndex >= 0 && sizeIndex < sizes().size() ? sizes()[sizeIndex] : QString();
    return tag.left(3) + size + tag.mid(8);
}

QString linkFragment(const QString& address, const QString& iconFolder,
                     const QString& previewName) {
    QString png = previewName;
    png.replace(QStringLiteral(".jpg"), QStringLiteral(".png"));
    return QStringLiteral("<a href=\"") + address + QStringLiteral("\">") +
           QStringLiteral("<img src=\"") + iconFolder + png + QStringLiteral("\" border=\"0\" />") +
           QStringLiteral("</a>");
}

QStringList readAddresses(const QString& path) {
    QStringList lines;
    if (!TextFile::readLines(path, lines, 1024 * 1024).ok())
        return {};
    return lines.mid(0, kNetworks);
}

bool writeAddresses(const QString& path, const QStringList& addresses) {
    QStringList lines = addresses.mid(0, kNetworks);
    while (lines.size() < kNetworks)
        lines << QString();
    return TextFile::writeLines(path, lines);
}

} // namespace quillora::SocialLinks
