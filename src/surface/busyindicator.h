#pragma once
// A spinning indeterminate progress indicator, drawn in the widget's text colour.
#include <QWidget>

class QVariantAnimation;

class BusyIndicator final : public QWidget
{
    Q_OBJECT

public:
    explicit BusyIndicator(QWidget *parent = nullptr);

    QSize sizeHint() const override { return {32, 32}; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    QVariantAnimation *m_spin = nullptr;
    int m_step = 0;
};
