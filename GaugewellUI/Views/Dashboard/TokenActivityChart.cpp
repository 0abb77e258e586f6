#include "TokenActivityChart.h"

#include "GaugewellUI/Support/Localizable.h"
#include "GaugewellUI/Views/DesignSystem/Palette.h"
#include "GaugewellUI/Views/DesignSystem/SymbolLabel.h"
#include "GaugewellUI/Views/DesignSystem/Typography.h"

#include <QBarCategoryAxis>
#include <QBarSeries>
#include <QBarSet>
#include <QChart>
#include <QChartView>
#include <QCursor>
#include <QEvent>
#include <QLabel>
#include <QLocale>
#include <QStackedLayout>
#include <QToolTip>
#include <QVBoxLayout>
#include <QValueAxis>
#include <cmath>

namespace gaugewell {

namespace {

// A round top for the axis and a step that lands on whole short figures (250K, 1M, 2.5M ...).
std::pair<double, int> niceScale(std::int64_t largest) {
    const double top = std::max<double>(largest, 1) * 1.08;
    const double magnitude = std::pow(10.0, std::floor(std::log10(top)));
    for (const double step : {0.1, 0.2, 0.25, 0.5, 1.0, 2.0, 2.5, 5.0, 10.0}) {
        const double size = step * magnitude;
        const int ticks = static_cast<int>(std::ceil(top / size));
        if (ticks <= 6) {
            return {ticks * size, ticks + 1};
        }
    }
    return {top, 5};
}

} // namespace

TokenActivityChart::TokenActivityChart(QWidget* parent)
    : QWidget(parent)
    , stack(new QStackedLayout(this))
    , view(new QChartView(this))
    , empty(new QWidget(this)) {
    setObjectName(QStringLiteral("token-chart"));
    view->setRenderHint(QPainter::Antialiasing);
    view->setBackgroundBrush(Qt::NoBrush);
    view->setStyleSheet(QStringLiteral("background: transparent"));
    view->setMinimumHeight(240);
    view->setAccessibleName(Localizable::tr("Token Activity"));
    auto* emptyLayout = new QVBoxLayout(empty);
    emptyLayout->addStretch();
    auto* symbol = new SymbolLabel("chart.xyaxis.line", 28, empty);
    makeSecondary(symbol);
    emptyLayout->addWidget(symbol, 0, Qt::AlignHCenter);
    emptyLayout->addWidget(makeLabel(Localizable::tr("No History Yet"), TextStyle::headline, empty), 0,
                           Qt::AlignHCenter);
    auto* hint = makeLabel(Localizable::tr("History appears after a provider exposes aggregate token data."),
                           TextStyle::callout, empty);
    makeSecondary(hint);
    emptyLayout->addWidget(hint, 0, Qt::AlignHCenter);
    emptyLayout->addStretch();
    empty->setObjectName(QStringLiteral("token-chart-empty"));
    empty->setMinimumHeight(160);
    stack->addWidget(view);
    stack->addWidget(empty);
    rebuild();
}

void TokenActivityChart::setContent(const TokenChartContent& newContent) {
    content = newContent;
    rebuild();
}

int TokenActivityChart::barSetCount() const {
    const auto series = view->chart()->series();
    if (series.isEmpty()) {
        return 0;
    }
    return static_cast<QBarSeries*>(series.front())->count();
}

void TokenActivityChart::changeEvent(QEvent* event) {
    if (event->type() == QEvent::PaletteChange) {
        rebuild();
    }
    QWidget::changeEvent(event);
}

void TokenActivityChart::rebuild() {
    if (content.isEmpty()) {
        stack->setCurrentWidget(empty);
        return;
    }
    stack->setCurrentWidget(view);
    const bool dark = isDark(palette());
    const QColor ink = palette().color(QPalette::WindowText);
    QColor grid = ink;
    grid.setAlphaF(0.12);

    auto* chart = new QChart;
    chart->setBackgroundVisible(false);
    chart->setPlotAreaBackgroundVisible(false);
    chart->setMargins(QMargins(4, 4, 4, 4));
    chart->legend()->setAlignment(Qt::AlignTop);
    chart->legend()->setLabelColor(ink);
    chart->setAnimationOptions(QChart::NoAnimation);

    auto* series = new QBarSeries;
    series->setBarWidth(0.8);
    for (const auto& [service, tokens] : content.series) {
        auto* bars = new QBarSet(QString::fromUtf8(displayName(service)));
        const QColor color = ProviderPalette::of(service, dark).base;
        bars->setColor(color);
        bars->setBorderColor(color);
        for (const auto value : tokens) {
            *bars << static_cast<qreal>(value);
        }
        const auto days = content.days;
        const auto values = tokens;
        const QString name = bars->label();
        connect(bars, &QBarSet::hovered, this, [days, values, name](bool over, int index) {
            if (!over || index < 0 || index >= static_cast<int>(values.size())) {
                QToolTip::hideText();
                return;
            }
            QToolTip::showText(
                QCursor::pos(),
                formatted(Localizable::tr("%@ · %@: %@ tokens"),
                          {name, QLocale().toString(days[std::size_t(index)], QStringLiteral("MMM d")),
                           groupedTokens(values[std::size_t(index)])}));
        });
        series->append(bars);
    }
    chart->addSeries(series);

    // "Nov 28", "29", "30", "Dec 1": the month only where it starts, so that a month of days fits.
    QStringList labels;
    for (std::size_t index = 0; index < content.days.size(); ++index) {
        const QDate& day = content.days[index];
        const bool named = index == 0 || day.month() != content.days[index - 1].month();
        labels << QLocale().toString(day, named ? QStringLiteral("MMM d") : QStringLiteral("d"));
    }
    auto* days = new QBarCategoryAxis;
    days->append(labels);
    days->setLabelsColor(ink);
    days->setGridLineVisible(false);
    days->setLinePenColor(grid);
    QFont small = font();
    small.setPixelSize(10);
    days->setLabelsFont(small);
    chart->addAxis(days, Qt::AlignBottom);
    series->attachAxis(days);

    const auto [top, ticks] = niceScale(content.largest);
    auto* tokens = new QValueAxis;
    tokens->setRange(0, top);
    tokens->setTickCount(ticks);
    tokens->setTitleText(Localizable::tr("Tokens"));
    tokens->setTitleBrush(ink);
    tokens->setLabelsColor(ink);
    tokens->setLabelsFont(small);
    tokens->setGridLineColor(grid);
    tokens->setLinePenColor(grid);
    // Short figures on the axis: Qt's printf-style format, on values scaled to the unit.
    const double unit = top >= 1e6 ? 1e6 : top >= 1e3 ? 1e3 : 1;
    if (unit > 1) {
        for (auto* set : series->barSets()) {
            for (int index = 0; index < set->count(); ++index) {
                set->replace(index, set->at(index) / unit);
            }
        }
        tokens->setRange(0, top / unit);
        tokens->setLabelFormat(unit == 1e6 ? QStringLiteral("%.1fM") : QStringLiteral("%.0fK"));
    } else {
        tokens->setLabelFormat(QStringLiteral("%.0f"));
    }
    chart->addAxis(tokens, layoutDirection() == Qt::RightToLeft ? Qt::AlignRight : Qt::AlignLeft);
    series->attachAxis(tokens);

    QChart* previous = view->chart();
    view->setChart(chart);
    delete previous;
}

} // namespace gaugewell
