#pragma once

#include <QString>
#include <QStringList>
#include <array>

// The social links: nine networks in a fixed order, their icon files (20 designs in 4 sizes,
// ".jpg" to show, ".png" to send) and the file of the organisation's page addresses.
namespace quillora::SocialLinks {

struct Network {
    const char* labelSuffix; // put after the "socialIndPage" text; begins with a blank
    const char* word;        // the file-name word
    const char* initial;     // the letters our icons carry (UTF-8)
    unsigned colour;         // 0xRRGGBB, the colour our icons use for the network
};

inline constexpr int kNetworks = 9;
inline constexpr int kDesigns = 20;
const std::array<Network, kNetworks>& networks();
// "16x16", "32x32", "48x48", "64x64"
const QStringList& sizes();
inline constexpr int kDefaultSize = 3; // "64x64"

// "07_64x64_vimeo.jpg" for design 7 (1-based), "64x64", network 7, ".jpg".
QString iconFileName(int design, const QString& size, int network, const QString& extension);

// The preview's file name for another size: the first three characters of `tag`, the size, and
// the tag from its ninth character on (07_64x64_vimeo.jpg with "32x32" gives
// 07_32x32_vimeo.jpg). A size index outside the list gives a name without a size.
QString resized(const QString& tag, int sizeIndex);

// The fragment inserted at the caret: a link to the address around the ".png" twin of the
// previewed icon, by its full path in the icon folder.
QString linkFragment(const QString& address, const QString& iconFolder, const QString& previewName);

// Social.dll: nine lines, the address of network i on line i+1. Missing lines are missing
// entries (the caller keeps what it had); a missing file gives none.
QStringList readAddresses(const QString& path);
// Rewrites the file with the nine addresses (fewer are padded with empty lines).
bool writeAddresses(const QString& path, const QStringList& addresses);

} // namespace quillora::SocialLinks
