#pragma once

#include "PopoverPresenter.h"
#include "ProviderKit/Authentication/ProviderService.h"

#include <QBoxLayout>
#include <QWidget>
#include <vector>

class QLabel;

namespace gaugewell {

class FreshnessBadge;
class UsageMeter;
class SymbolLabel;

// One allowance window: its name and what remains, a meter of the used share in the provider's
// colours, and when it resets (the period in the tooltip).
// Gives `rows` one row per content, in order, adding new ones to `layout` and removing extra ones.
void showWindowRows(std::vector<class WindowRow*>& rows, const std::vector<WindowRowContent>& contents,
                    ProviderService service, QBoxLayout* layout, QWidget* parent);

class WindowRow : public QWidget {
    Q_OBJECT

public:
    WindowRow(ProviderService service, bool showsReset = true, QWidget* parent = nullptr);

    void setContent(const WindowRowContent& content);
    void setReduceMotion(bool reduce);

private:
    QLabel* label;
    QLabel* badge;
    QLabel* remaining;
    UsageMeter* meter;
    SymbolLabel* clock;
    QLabel* reset;
    QLabel* used;
    QLabel* hint;
    bool showsReset;
};

} // namespace gaugewell
