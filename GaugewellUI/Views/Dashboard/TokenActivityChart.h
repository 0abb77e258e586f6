#pragma once

#include "DashboardPresenter.h"

#include <QWidget>

class QLabel;
class QStackedLayout;

class QChart;
class QChartView;

namespace gaugewell {

// "Token Activity": the daily totals as bars, side by side per provider in its colour, with the
// token axis on the leading side in short figures and the exact count in each bar's tooltip; an
// empty state until a provider reports aggregate tokens.
class TokenActivityChart : public QWidget {
    Q_OBJECT

public:
    explicit TokenActivityChart(QWidget* parent = nullptr);

    void setContent(const TokenChartContent& content);
    int barSetCount() const;

protected:
    void changeEvent(QEvent* event) override;

private:
    void rebuild();

    TokenChartContent content;
    QStackedLayout* stack;
    QChartView* view;
    QWidget* empty;
};

} // namespace gaugewell
