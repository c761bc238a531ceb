#include "filtermenubutton.h"

#include "keyboardreach.h"
#include "surface/icons.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QPainterPath>
#include <QProxyStyle>

namespace {
constexpr int symbolWidth = 18;
constexpr int chevronWidth = 12;
constexpr int padding = 6;

// Two hundred countries make one column no taller than the screen, scrolled, rather than
// columns across it.
class LongMenuStyle final : public QProxyStyle
{
public:
    using QProxyStyle::QProxyStyle;
    int styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                  QStyleHintReturn *returnData) const override
    {
        if (hint == QStyle::SH_Menu_Scrollable)
            return 1;
        return QProxyStyle::styleHint(hint, option, widget, returnData);
    }
};

// A name without its accents and case, for typing it: "cote" finds "Côte d'Ivoire".
QString searchable(const QString &text)
{
    QString plain;
    for (const QChar c : text.normalized(QString::NormalizationForm_D))
        if (c.category() != QChar::Mark_NonSpacing)
            plain.append(c.toCaseFolded());
    return plain;
}

// Typing in the open menu goes to the first item starting with what was typed (Qt's own
// search picks the item holding the most of the letters anywhere).
class TypeAhead final : public QObject
{
public:
    using QObject::QObject;
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        auto *menu = qobject_cast<QMenu *>(watched);
        if (!menu || event->type() != QEvent::KeyPress)
            return false;
        const auto *key = static_cast<QKeyEvent *>(event);
        const QString text = key->text();
        if (text.size() != 1 || !text.at(0).isPrint() || text.at(0).isSpace()
            || (key->modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier)))
            return false;
        if (!m_typing.isValid() || m_typing.elapsed() > pauseMs)
            m_typed.clear();
        m_typing.start();
        m_typed += searchable(text);
        const QList<QAction *> actions = menu->actions();
        for (QAction *action : actions) {
            if (!action->isSeparator() && action->isEnabled()
                && searchable(action->text()).startsWith(m_typed)) {
                menu->setActiveAction(action);
                break;
            }
        }
        return true;
    }

private:
    static constexpr int pauseMs = 1000;
    QElapsedTimer m_typing;
    QString m_typed;
};
} // namespace

FilterMenuButton::FilterMenuButton(const QString &symbol, QWidget *parent)
    : QAbstractButton(parent)
    , m_symbol(symbol)
    , m_menu(new QMenu(this))
{
    auto *style = new LongMenuStyle(QApplication::style()->name());
    style->setParent(m_menu);
    m_menu->setStyle(style);
    m_menu->installEventFilter(new TypeAhead(m_menu));
    setFixedHeight(buttonHeight);
    KeyboardReach::reachable(this);
    setAttribute(Qt::WA_Hover);
    connect(this, &QAbstractButton::clicked, this,
            [this] { m_menu->popup(mapToGlobal(QPoint(0, height()))); });
}

QSize FilterMenuButton::sizeHint() const
{
    const int textWidth = fontMetrics().horizontalAdvance(text());
    return {padding + symbolWidth + textWidth + 4 + chevronWidth + padding, buttonHeight};
}

void FilterMenuButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (underMouse() || isDown()) {
        QPainterPath face;
        face.addRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 6, 6);
        painter.fillPath(face, QColor(0, 0, 0, isDown() ? 30 : 16));
    }
    const QColor ink = palette().color(QPalette::WindowText);
    painter.setPen(ink);
    QRect area = rect().adjusted(padding, 0, -padding, 0);
    painter.setFont(Icons::font(15));
    painter.drawText(QRect(area.left(), 0, symbolWidth, height()), Qt::AlignCenter,
                     Icons::glyph(m_symbol));
    const QRect chevron(area.right() - chevronWidth + 1, 0, chevronWidth, height());
    painter.setFont(Icons::font(12));
    painter.drawText(chevron, Qt::AlignCenter, Icons::glyph(u"chevron.down"));
    const QRect label(area.left() + symbolWidth + 2, 0,
                      chevron.left() - 2 - (area.left() + symbolWidth + 2), height());
    painter.setFont(font());
    painter.drawText(label, Qt::AlignLeft | Qt::AlignVCenter,
                     fontMetrics().elidedText(text(), Qt::ElideRight, label.width()));
    KeyboardReach::paintFocusRing(painter, this, QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 6);
}
