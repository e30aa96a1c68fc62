#pragma once

#include <QColor>
#include <QFont>
#include <QLinearGradient>
#include <QPointF>
#include <QString>
#include <optional>

class QPainter;
class QRectF;

namespace orvan::render {

/// How a line of panel lettering looks. Sizes are in design points at any painter scale.
struct LetteringStyle {
    double size = 9;
    QFont::Weight weight = QFont::Normal;
    double tracking = 0;          ///< extra points between letters
    QColor color = Qt::white;
    bool monospaced = false;
    bool italic = false;
    QString family{};               ///< empty: the system sans-serif
    std::optional<QColor> shadowColor{}; ///< a crisp (unblurred) shadow
    std::optional<QLinearGradient> gradient{}; ///< fills the letters instead of `color` (in design points)
    QPointF shadowOffset{};

    static LetteringStyle of(double size, QFont::Weight weight, double tracking, QColor color)
    {
        return {.size = size, .weight = weight, .tracking = tracking, .color = color};
    }
    LetteringStyle withShadow(QColor shadow, QPointF offset) const
    {
        LetteringStyle style = *this;
        style.shadowColor = shadow;
        style.shadowOffset = offset;
        return style;
    }
    LetteringStyle withFamily(QString face, bool isItalic) const
    {
        LetteringStyle style = *this;
        style.family = std::move(face);
        style.italic = isItalic;
        return style;
    }
    LetteringStyle inMonospace() const
    {
        LetteringStyle style = *this;
        style.monospaced = true;
        return style;
    }
};

/// Draws `text` in a box, aligned as asked, e.g. Qt::AlignCenter on a centre point's box.
void drawLettering(QPainter& painter, const QRectF& box, Qt::Alignment alignment, const QString& text,
                   const LetteringStyle& style);

/// Draws one line centred on `centre`.
void drawLetteringCentred(QPainter& painter, QPointF centre, const QString& text, const LetteringStyle& style);

/// The natural width of a line in design points.
double letteringWidth(const QString& text, const LetteringStyle& style);

} // namespace orvan::render
