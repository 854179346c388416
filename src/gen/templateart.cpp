// Draws the pictures of the templates we ship (logos, hero banners, small icons). Their output
// is kept in data/defaults/Template/; run again after changing a picture here:
//   quillora-templateart data/defaults/Template
#include <QDir>
#include <QFont>
#include <QGuiApplication>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QTextStream>

#include <cmath>
#include <functional>

namespace {

QFont sans(int px, bool bold = true) {
    QFont f(QStringLiteral("DejaVu Sans"));
    f.setPixelSize(px);
    f.setBold(bold);
    return f;
}

QImage canvas(int w, int h, const QColor& ground = Qt::transparent) {
    QImage image(w, h, QImage::Format_ARGB32_Premultiplied);
    image.fill(ground);
    return image;
}

// A word mark: a rounded square with a letter, then the name.
QImage logo(const QString& name, const QColor& colour, const QColor& text) {
    QImage image = canvas(220, 56);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    QPainterPath mark;
    mark.addRoundedRect(QRectF(4, 6, 44, 44), 10, 10);
    p.fillPath(mark, colour);
    p.setPen(Qt::white);
    p.setFont(sans(28));
    p.drawText(QRectF(4, 6, 44, 44), Qt::AlignCenter, name.left(1));
    p.setPen(text);
    p.setFont(sans(22));
    p.drawText(QRectF(58, 0, 162, 56), Qt::AlignVCenter | Qt::AlignLeft, name);
    return image;
}

// A banner: a two-colour gradient with soft circles and a headline.
QImage hero(int w, int h, const QColor& a, const QColor& b, const QString& headline,
            const QString& sub) {
    QImage image = canvas(w, h, Qt::white);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    QLinearGradient g(0, 0, w, h);
    g.setColorAt(0, a);
    g.setColorAt(1, b);
    p.fillRect(image.rect(), g);
    p.setPen(Qt::NoPen);
    for (int i = 0; i < 6; ++i) {
        QColor c = Qt::white;
        c.setAlpha(18 + 8 * i);
        p.setBrush(c);
        const double r = h * (0.25 + 0.12 * i);
        p.drawEllipse(QPointF(w * (0.62 + 0.07 * i), h * (0.15 + 0.13 * i)), r, r);
    }
    p.setPen(Qt::white);
    p.setFont(sans(h / 6));
    p.drawText(QRectF(w * 0.07, h * 0.22, w * 0.8, h * 0.3), Qt::AlignLeft | Qt::AlignVCenter,
               headline);
    p.setFont(sans(h / 14, false));
    p.drawText(QRectF(w * 0.07, h * 0.52, w * 0.8, h * 0.2), Qt::AlignLeft | Qt::AlignVCenter, sub);
    return image;
}

// A round badge with a simple line glyph: star, check, heart, clock, pin or mail.
QImage icon(const QString& glyph, const QColor& colour) {
    const int s = 64;
    QImage image = canvas(s, s);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(Qt::NoPen);
    p.setBrush(colour);
    p.drawEllipse(QRectF(2, 2, s - 4, s - 4));
    p.setPen(QPen(Qt::white, 4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    p.setBrush(Qt::NoBrush);
    const QPointF c(s / 2.0, s / 2.0);
    if (glyph == QLatin1String("star")) {
        QPainterPath star;
        for (int i = 0; i < 10; ++i) {
            const double r = i % 2 ? 8 : 18;
            const double t = -M_PI / 2 + i * M_PI / 5;
            const QPointF pt(c.x() + r * std::cos(t), c.y() + r * std::sin(t));
            i == 0 ? star.moveTo(pt) : star.lineTo(pt);
        }
        star.closeSubpath();
        p.setBrush(Qt::white);
        p.drawPath(star);
    } else if (glyph == QLatin1String("check")) {
        p.drawPolyline(QPolygonF({QPointF(19, 33), QPointF(28, 42), QPointF(45, 23)}));
    } else if (glyph == QLatin1String("heart")) {
        QPainterPath h;
        h.moveTo(32, 46);
        h.cubicTo(10, 32, 16, 14, 32, 24);
        h.cubicTo(48, 14, 54, 32, 32, 46);
        p.setBrush(Qt::white);
        p.drawPath(h);
    } else if (glyph == QLatin1String("clock")) {
        p.drawEllipse(c, 17, 17);
        p.drawLine(c, QPointF(32, 21));
        p.drawLine(c, QPointF(41, 36));
    } else if (glyph == QLatin1String("pin")) {
        QPainterPath pin;
        pin.moveTo(32, 48);
        pin.cubicTo(14, 30, 20, 14, 32, 14);
        pin.cubicTo(44, 14, 50, 30, 32, 48);
        p.drawPath(pin);
        p.drawEllipse(QPointF(32, 28), 4, 4);
    } else {
        p.drawRoundedRect(QRectF(15, 20, 34, 24), 3, 3);
        p.drawPolyline(QPolygonF({QPointF(16, 22), QPointF(32, 34), QPointF(48, 22)}));
    }
    return image;
}

// A photo stand-in for articles: a small landscape (sky, sun, hills) in the template's colours.
QImage picture(int w, int h, const QColor& sky, const QColor& hill) {
    QImage image = canvas(w, h, sky);
    QPainter p(&image);
    p.setRenderHint(QPainter::Antialiasing);
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(255, 214, 102));
    p.drawEllipse(QPointF(w * 0.75, h * 0.3), h * 0.14, h * 0.14);
    QPainterPath back;
    back.moveTo(0, h * 0.7);
    back.quadTo(w * 0.3, h * 0.35, w * 0.6, h * 0.65);
    back.quadTo(w * 0.8, h * 0.5, w, h * 0.6);
    back.lineTo(w, h);
    back.lineTo(0, h);
    p.fillPath(back, hill.lighter(130));
    QPainterPath front;
    front.moveTo(0, h * 0.85);
    front.quadTo(w * 0.5, h * 0.6, w, h * 0.9);
    front.lineTo(w, h);
    front.lineTo(0, h);
    p.fillPath(front, hill);
    return image;
}

} // namespace

int main(int argc, char** argv) {
    QGuiApplication app(argc, argv);
    QTextStream err(stderr);
    if (argc != 2) {
        err << "usage: quillora-templateart TEMPLATE_FOLDER\n";
        return 2;
    }
    const QString root = QDir(QString::fromLocal8Bit(argv[1])).absolutePath() + u'/';
    int failures = 0;
    const auto save = [&](const QString& path, const QImage& image) {
        QDir().mkpath(root + path.section(u'/', 0, -2));
        const bool jpg = path.endsWith(QLatin1String(".jpg"));
        QImage out = image;
        if (jpg) {
            out = QImage(image.size(), QImage::Format_RGB32);
            out.fill(Qt::white);
            QPainter(&out).drawImage(0, 0, image);
        }
        if (!out.save(root + path, jpg ? "JPG" : "PNG", jpg ? 85 : -1)) {
            err << "cannot write " << root + path << '\n';
            ++failures;
        }
    };
    const QColor navy("#1f3a5f"), teal("#1b8a8f"), coral("#e4572e"), plum("#6a4c93"),
        green("#2e7d32"), amber("#f29e4c");

    const QString corp = QStringLiteral("Professional/Corporate/");
    save(corp + "corporate-logo.png", logo(QStringLiteral("Northfield"), navy, navy));
    save(corp + "corporate-hero.jpg", hero(600, 240, navy, teal, QStringLiteral("Quarterly update"),
                                           QStringLiteral("What we built together this season")));
    save(corp + "corporate-growth.png", icon(QStringLiteral("star"), teal));
    save(corp + "corporate-team.png", icon(QStringLiteral("heart"), teal));
    save(corp + "corporate-plan.png", icon(QStringLiteral("check"), teal));

    const QString news = QStringLiteral("Professional/Bulletin/");
    save(news + "bulletin-logo.png", logo(QStringLiteral("The Bulletin"), plum, QColor("#333333")));
    save(news + "bulletin-story1.jpg", picture(180, 120, QColor("#cfe3f7"), plum));
    save(news + "bulletin-story2.jpg", picture(180, 120, QColor("#fde7d3"), coral));
    save(news + "bulletin-story3.jpg", picture(180, 120, QColor("#dff3e4"), green));

    const QString event = QStringLiteral("Professional/Event/");
    save(event + "event-logo.png", logo(QStringLiteral("Summit"), coral, QColor("#333333")));
    save(event + "event-hero.jpg", hero(600, 260, coral, plum, QStringLiteral("You are invited"),
                                        QStringLiteral("One day of talks, workshops and people")));
    save(event + "event-date.png", icon(QStringLiteral("clock"), coral));
    save(event + "event-place.png", icon(QStringLiteral("pin"), coral));

    const QString ann = QStringLiteral("Simple/Announcement/");
    save(ann + "announcement-logo.png", logo(QStringLiteral("Brightway"), teal, QColor("#333333")));
    save(ann + "announcement-news.png", icon(QStringLiteral("mail"), teal));

    const QString letter = QStringLiteral("Simple/Letter/");
    save(letter + "letter-logo.png", logo(QStringLiteral("Oakridge"), green, green));

    const QString offer = QStringLiteral("Simple/Offer/");
    save(offer + "offer-logo.png", logo(QStringLiteral("Marigold"), amber, QColor("#333333")));
    save(offer + "offer-hero.jpg", hero(600, 280, amber, coral, QStringLiteral("-20% this week"),
                                        QStringLiteral("On everything in the spring collection")));
    return failures == 0 ? 0 : 1;
}
