#pragma once

#include "DashboardPresenter.h"

#include <QTableWidget>

namespace gaugewell {

// "All Windows": every current window of every provider, with a warning marker on those nearly
// used up.
class WindowsTable : public QTableWidget {
    Q_OBJECT

public:
    explicit WindowsTable(QWidget* parent = nullptr);

    void setRows(const std::vector<WindowTableRow>& rows);

protected:
    void changeEvent(QEvent* event) override;

private:
    std::vector<WindowTableRow> rows;
};

} // namespace gaugewell
