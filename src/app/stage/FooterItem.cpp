#include "FooterItem.h"

#include <QPainter>

namespace orvan {

namespace {
constexpr double kLineHeight = 14;
}

FooterItem::FooterItem(QString text, Qt::Alignment side)
    : m_text(std::move(text))
    , m_side(side)
{
    setAcceptedMouseButtons(Qt::NoButton);
    setCacheMode(DeviceCoordinateCache);
}

render::LetteringStyle FooterItem::style()
{
    return render::LetteringStyle::of(9, QFont::Medium, 0.8, QColor::fromRgbF(0.75f, 0.75f, 0.75f, 0.7f))
        .withShadow(Qt::black, {-0.6, 0.8});
}

// The item's origin is the line's anchor: its bottom-left corner, or bottom-right for the right side.
QRectF FooterItem::boundingRect() const
{
    if (!m_box) {
        const double width = render::letteringWidth(m_text, style()) + 2;
        const double left = m_side & Qt::AlignRight ? -width : 0;
        m_box = QRectF(left - 1, -kLineHeight, width + 2, kLineHeight + 1);
    }
    return *m_box;
}

void FooterItem::paint(QPainter* painter, const QStyleOptionGraphicsItem*, QWidget*)
{
    const QRectF box = boundingRect().adjusted(1, 0, -1, -1);
    render::drawLettering(*painter, box, (m_side & Qt::AlignHorizontal_Mask) | Qt::AlignBottom, m_text, style());
}

} // namespace orvan
