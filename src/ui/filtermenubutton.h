#pragma once
// A borderless menu button of the channel list: a symbol, the current choice and a small
// chevron; a click opens its menu.
#include <QAbstractButton>

class QMenu;

class FilterMenuButton final : public QAbstractButton
{
    Q_OBJECT

public:
    static constexpr int buttonHeight = 26;

    FilterMenuButton(const QString &symbol, QWidget *parent = nullptr);

    QMenu *menu() const { return m_menu; }
    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_symbol;
    QMenu *m_menu = nullptr;
};
