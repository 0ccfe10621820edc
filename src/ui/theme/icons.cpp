#include "icons.h"

#include <QFile>
#include <QIconEngine>
#include <QImage>
#include <QPainter>
#include <QRegularExpression>
#include <QSvgRenderer>

namespace Kestrun::Icons {

namespace {

struct Row {
    const char *symbol;  // the design's name
    const char *breeze;  // the Breeze icon, in Resources/icons/
};

// The one table from design names to icons. scripts/copy-icons reads it.
constexpr Row table[] = {
    {"house", "go-home"},
    {"chevron.left", "go-previous"},
    {"chevron.right", "go-next"},
    {"checkmark.circle.fill", "emblem-checked"},
    {"checkmark.circle", "checkmark"},
    {"checkmark.seal.fill", "approved"},
    {"xmark.circle.fill", "emblem-error"},
    {"circle", "task-process-0"},
    {"largecircle.fill.circle", "task-process-4"},
    {"questionmark.circle", "question"},
    {"hammer", "run-build"},
    {"star", "non-starred-symbolic"},
    {"star.fill", "starred-symbolic"},
    {"wrench.and.screwdriver", "tools"},
    {"flask", "code-context"},
    {"chevron.left.forwardslash.chevron.right", "format-text-code"},
    {"book", "documentation"},
    {"lightbulb", "games-hint"},
    {"exclamationmark.triangle", "emblem-warning"},
    {"apple.logo", "computer"},
    {"info.circle", "help-about"},
    {"play.fill", "media-playback-start-symbolic"},
    {"checklist", "view-pim-tasks"},
    {"hourglass", "chronometer"},
};

// Breeze icons name their colours in a style sheet ("ColorScheme-Text"), as
// KDE's own icon loader expects; recolouring rewrites those colours and
// leaves the rest (the white check inside a badge) as drawn.
QByteArray tinted(QByteArray svg, const QColor &color)
{
    static const QRegularExpression colour(QStringLiteral("color:\\s*#[0-9a-fA-F]{3,8}"));
    QString text = QString::fromUtf8(svg);
    const qsizetype start = text.indexOf(QLatin1String("id=\"current-color-scheme\""));
    const qsizetype end = start < 0 ? -1 : text.indexOf(QLatin1String("</style>"), start);
    if (end < 0)
        return svg;
    QString sheet = text.mid(start, end - start);
    // Opacity is applied when painting: the colour here is opaque.
    sheet.replace(colour, QLatin1String("color:") + color.name(QColor::HexRgb));
    text.replace(start, end - start, sheet);
    return text.toUtf8();
}

QByteArray source(const QString &symbol)
{
    const QString name = fileName(symbol);
    if (name.isEmpty())
        return {};
    QFile file(QStringLiteral(":/icons/%1.svg").arg(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Draws the recoloured SVG at whatever size and ratio a view asks for.
class TintedEngine final : public QIconEngine {
public:
    TintedEngine(QByteArray svg, QColor color)
        : m_svg(std::move(svg))
        , m_color(std::move(color))
    {
    }

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State) override
    {
        const QColor color = mode == QIcon::Disabled ? disabled() : m_color;
        painter->save();
        painter->setOpacity(painter->opacity() * color.alphaF());
        if (m_svg.contains("current-color-scheme")) {
            QSvgRenderer(tinted(m_svg, color)).render(painter, QRectF(rect));
        } else {
            // A single-colour icon without a colour scheme: paint its shape.
            const qreal ratio = painter->device() ? painter->device()->devicePixelRatioF() : 1;
            QImage shape(rect.size() * ratio, QImage::Format_ARGB32_Premultiplied);
            shape.fill(Qt::transparent);
            QPainter inner(&shape);
            QSvgRenderer(m_svg).render(&inner, QRectF(QPointF(), QSizeF(shape.size())));
            inner.setCompositionMode(QPainter::CompositionMode_SourceIn);
            inner.fillRect(shape.rect(), QColor(color.red(), color.green(), color.blue()));
            inner.end();
            shape.setDevicePixelRatio(ratio);
            painter->drawImage(rect.topLeft(), shape);
        }
        painter->restore();
    }

    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        return scaledPixmap(size, mode, state, 1);
    }

    QPixmap scaledPixmap(const QSize &size, QIcon::Mode mode, QIcon::State state, qreal scale) override
    {
        QPixmap image(size * scale);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        paint(&painter, QRect(QPoint(), image.size()), mode, state);
        painter.end();
        image.setDevicePixelRatio(scale);
        return image;
    }

    QIconEngine *clone() const override { return new TintedEngine(m_svg, m_color); }

private:
    QColor disabled() const
    {
        QColor c = m_color;
        c.setAlphaF(c.alphaF() * 0.4f);
        return c;
    }

    QByteArray m_svg;
    QColor m_color;
};

} // namespace

QString fileName(const QString &symbol)
{
    for (const Row &row : table) {
        if (symbol == QLatin1String(row.symbol))
            return QLatin1String(row.breeze);
    }
    return {};
}

QStringList symbols()
{
    QStringList all;
    for (const Row &row : table)
        all.append(QLatin1String(row.symbol));
    return all;
}

QIcon icon(const QString &symbol, const QColor &color)
{
    QByteArray svg = source(symbol);
    if (svg.isEmpty())
        return {};
    return QIcon(new TintedEngine(std::move(svg), color));
}

QPixmap pixmap(const QString &symbol, const QColor &color, int size, qreal devicePixelRatio)
{
    return icon(symbol, color).pixmap(QSize(size, size), devicePixelRatio);
}

} // namespace Kestrun::Icons
