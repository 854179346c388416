// Draws the social icon set into a folder: every network in 20 designs and 4 sizes, each as a
// ".jpg" on white (what the social window shows) and a ".png" with a transparent ground (what
// goes into a message). The glyphs are our own: the network's initial, a play mark, two dots.
// Run by the build; usage: quillora-socialicons OUTPUT_FOLDER
#include "core/tools/SocialLinks.h"

#include <QDir>
#include <QFont>
#include <QGuiApplication>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QTextStream>

#include <cmath>

namespace {

namespace SocialLinks = quillora::SocialLinks;

enum class Shape { Circle, Square, Rounded, Hexagon, Diamond, Leaf, None };
enum class Fill { Solid, Outline, Dark, Tint, Gradient, Ring, Grey, Shadow, Plain };

struct Design {
    Shape shape;
    Fill fill;
};

constexpr Design kDesigns[SocialLinks::kDesigns] = {
    {Shape::Circle, Fill::Solid},     {Shape::Square, Fill::Solid},
    {Shape::Rounded, Fill::Solid},    {Shape::Circle, Fill::Outline},
    {Shape::Square, Fill::Outline},   {Shape::Rounded, Fill::Outline},
    {Shape::Circle, Fill::Dark},      {Shape::Square, Fill::Dark},
    {Shape::Rounded, Fill::Dark},     {Shape::Circle, Fill::Tint},
    {Shape::Rounded, Fill::Tint},     {Shape::Circle, Fill::Gradient},
    {Shape::Rounded, Fill::Gradient}, {Shape::Hexagon, Fill::Solid},
    {Shape::Diamond, Fill::Solid},    {Shape::Circle, Fill::Ring},
    {Shape::Rounded, Fill::Grey},     {Shape::Square, Fill::Shadow},
    {Shape::Leaf, Fill::Solid},       {Shape::None, Fill::Plain},
};

QPainterPath outline(Shape shape, const QRectF& r) {
    QPainterPath p;
    const double w = r.width();
    switch (shape) {
    case Shape::Circle:
        p.addEllipse(r);
        break;
    case Shape::Square:
    case Shape::None:
        p.addRect(r);
        break;
    case Shape::Rounded:
        p.addRoundedRect(r, w * 0.22, w * 0.22);
        break;
    case Shape::Hexagon:
        for (int i = 0; i < 6; ++i) {
            const double a = M_PI / 3 * i + M_PI / 6;
            const QPointF pt(r.center().x() + w / 2 * std::cos(a),
                             r.center().y() + w / 2 * std::sin(a));
            i == 0 ? p.moveTo(pt) : p.lineTo(pt);
        }
        p.closeSubpath();
        break;
    case Shape::Diamond:
        p.moveTo(r.center().x(), r.top());
        p.lineTo(r.right(), r.center().y());
        p.lineTo(r.center().x(), r.bottom());
        p.lineTo(r.left(), r.center().y());
        p.closeSubpath();
        break;
    case Shape::Leaf: {
        const double k = w * 0.45;
        p.moveTo(r.left(), r.top());
        p.lineTo(r.right() - k, r.top());
        p.quadTo(r.right(), r.top(), r.right(), r.top() + k);
        p.lineTo(r.right(), r.bottom());
        p.lineTo(r.left() + k, r.bottom());
        p.quadTo(r.left(), r.bottom(), r.left(), r.bottom() - k);
        p.closeSubpath();
        break;
    }
    }
    return p;
}

// The network's mark inside `r`, in `colour`.
void drawGlyph(QPainter& p, const SocialLinks::Network& n, const QRectF& r, const QColor& colour) {
    const QString word = QString::fromLatin1(n.word);
    p.setPen(Qt::NoPen);
    p.setBrush(colour);
    if (word == QLatin1String("youtube")) {
        // A plain play mark: the network is about video.
        QPainterPath play;
        const QPointF c = r.center();
        const double s = r.height() * 0.36;
        play.moveTo(c.x() - s * 0.75, c.y() - s);
        play.lineTo(c.x() + s * 1.05, c.y());
        play.lineTo(c.x() - s * 0.75, c.y() + s);
        play.closeSubpath();
        p.drawPath(play);
        return;
    }
    const QString text = QString::fromUtf8(n.initial);
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setBold(true);
    font.setPixelSize(std::max(6, int(r.height() * (text.size() > 1 ? 0.5 : 0.7))));
    font.setStyleStrategy(QFont::PreferAntialias);
    QPainterPath path;
    path.addText(0, 0, font, text);
    const QRectF box = path.boundingRect();
    path.translate(r.center() - box.center());
    p.drawPath(path);
}

QImage drawIcon(const Design& d, const SocialLinks::Network& n, int size) {
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    const QColor colour = QColor::fromRgb(n.colour);
    const double pad = d.fill == Fill::Shadow ? size * 0.1 : size * 0.03;
    QRectF r(pad, pad, size - 2 * pad, size - 2 * pad);
    if (d.fill == Fill::Shadow)
        r.translate(-size * 0.05, -size * 0.05);
    const QPainterPath shape = outline(d.shape, r);
    const double line = std::max(1.0, size / 16.0);
    QColor glyph = Qt::white;
    switch (d.fill) {
    case Fill::Solid:
        p.fillPath(shape, colour);
        break;
    case Fill::Outline: {
        const QRectF inner = r.adjusted(line / 2, line / 2, -line / 2, -line / 2);
        p.fillPath(outline(d.shape, inner), Qt::white);
        p.strokePath(outline(d.shape, inner), QPen(colour, line));
        glyph = colour;
        break;
    }
    case Fill::Dark:
        p.fillPath(shape, QColor(0x33, 0x33, 0x33));
        break;
    case Fill::Tint: {
        p.fillPath(shape, colour.lighter(190));
        glyph = colour.darker(120);
        break;
    }
    case Fill::Gradient: {
        QLinearGradient g(r.topLeft(), r.bottomLeft());
        g.setColorAt(0, colour.lighter(150));
        g.setColorAt(1, colour.darker(130));
        p.fillPath(shape, g);
        break;
    }
    case Fill::Ring: {
        p.fillPath(shape, colour);
        const double in = size * 0.12;
        p.strokePath(outline(d.shape, r.adjusted(in, in, -in, -in)), QPen(Qt::white, line));
        break;
    }
    case Fill::Grey:
        p.fillPath(shape, QColor(0xe6, 0xe6, 0xe6));
        glyph = QColor(0x55, 0x55, 0x55);
        break;
    case Fill::Shadow:
        p.fillPath(shape.translated(size * 0.1, size * 0.1), QColor(0, 0, 0, 90));
        p.fillPath(shape, colour);
        break;
    case Fill::Plain:
        glyph = colour;
        break;
    }
    const double inset = d.shape == Shape::Diamond ? r.width() * 0.26 : r.width() * 0.18;
    drawGlyph(p, n, r.adjusted(inset, inset, -inset, -inset), glyph);
    p.end();
    return image;
}

} // namespace

int main(int argc, char** argv) {
    QGuiApplication app(argc, argv);
    QTextStream err(stderr);
    if (argc != 2) {
        err << "usage: quillora-socialicons OUTPUT_FOLDER\n";
        return 2;
    }
    const QString folder = QDir(QString::fromLocal8Bit(argv[1])).absolutePath() + u'/';
    if (!QDir().mkpath(folder)) {
        err << "cannot create " << folder << '\n';
        return 1;
    }
    int written = 0;
    for (int n = 0; n < SocialLinks::kNetworks; ++n) {
        for (int d = 0; d < SocialLinks::kDesigns; ++d) {
            for (const QString& size : SocialLinks::sizes()) {
                const int px = size.section(u'x', 0, 0).toInt();
                const QImage icon = drawIcon(kDesigns[d], SocialLinks::networks()[size_t(n)], px);
                QImage shown(icon.size(), QImage::Format_RGB32);
                shown.fill(Qt::white);
                QPainter(&shown).drawImage(0, 0, icon);
                const QString base = folder + SocialLinks::iconFileName(d + 1, size, n, QString());
                if (!icon.save(base + QStringLiteral(".png"), "PNG") ||
                    !shown.save(base + QStringLiteral(".jpg"), "JPG", 92)) {
                    err << "cannot write " << base << ".png/.jpg\n";
                    return 1;
                }
                written += 2;
            }
        }
    }
    QTextStream(stdout) << written << " icons in " << folder << '\n';
    return 0;
}
