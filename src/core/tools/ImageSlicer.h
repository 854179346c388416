#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>

#include <functional>
#include <vector>

// Import from an image: one tall picture becomes a page of stacked PNG slices.
namespace quillora::tools {

// Lenient numbers of the two fields: the leading number of the text, 0 when there is none.
float fieldValue(QStringView text);
// The dialog's minimums: a width of 400 or less becomes 400, a slice height of 100 or less
// becomes 100.
inline constexpr float kMinWidth = 400, kMinSliceHeight = 100;

// Pictures larger than this (before or after scaling) are refused before any pixel is decoded:
// a few bytes of PNG or GIF can declare gigabytes of pixels.
inline constexpr qint64 kMaxPixels = 100'000'000;

enum class SliceCheck { Ok, MissingFile, NoWidth, NoSliceHeight };
// The checks made before any work, in this order: the file exists, width != 0, slice height != 0.
SliceCheck checkSliceInput(const QString& imagePath, float width, float sliceHeight);

// One slice: `rows` rows of the scaled picture from `top`, shown `declaredHeight` high.
// A slice with 0 rows (the last pass when the height is a multiple of the slice height) keeps its
// page row; PNG cannot hold an image without rows, so its file is written empty: no pixel is
// made up, and the page refers to a file that exists, which saving the message needs.
struct Slice {
    int top = 0;
    int rows = 0;
    float declaredHeight = 0;
    QString file;
};
// The rectangles of the slice loop for a picture scaled to height H (pure arithmetic, no image).
// Empty when the slice height rounds to less than one pixel.
std::vector<Slice> planSlices(int scaledHeight, float sliceHeight, const QString& workFolder);
// The page text, byte for byte (8-bit, CR LF line ends, trailing empty line), referring to the
// slices.
QByteArray slicedPage(const QString& workFolder, float width, const std::vector<Slice>& slices);

struct SliceResult {
    QString error; // empty on success; the image library's own message when it gave one
    bool cancelled = false;
    int scaledWidth = 0, scaledHeight = 0;
    std::vector<Slice> slices;
    QString pageFile; // workFolder + "tmpTransImg.html"
    bool ok() const { return error.isEmpty() && !cancelled; }
};
// Progress: done slices of total; returning false cancels (files written so far are removed).
// Always called from the thread that called sliceImage.
using SliceProgress = std::function<bool(int done, int total)>;
// The whole conversion into workFolder (which ends with "/"; made if missing, nothing written
// outside it): load by extension, Lanczos3 to exactly `width` (rounded), the slices as PNG
// with best compression (converted first when PNG cannot store the depth), then the page file.
SliceResult sliceImage(const QString& imagePath, float width, float sliceHeight,
                       const QString& workFolder, const SliceProgress& progress = {});

} // namespace quillora::tools
