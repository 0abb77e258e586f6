#include "WindowsTable.h"

#include "GaugewellUI/Support/Localizable.h"
#include "GaugewellUI/Views/DesignSystem/Palette.h"
#include "GaugewellUI/Views/DesignSystem/SymbolIcon.h"

#include <QEvent>
#include <QHeaderView>

namespace gaugewell {

WindowsTable::WindowsTable(QWidget* parent)
    : QTableWidget(0, 6, parent) {
    setObjectName(QStringLiteral("all-windows"));
    setAccessibleName(Localizable::tr("All Windows"));
    setHorizontalHeaderLabels({Localizable::tr("Provider"), Localizable::tr("Window"),
                               Localizable::tr("Consumed"), Localizable::tr("Remaining"),
                               Localizable::tr("Reset"), Localizable::tr("Source")});
    verticalHeader()->hide();
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setFocusPolicy(Qt::StrongFocus);
    setShowGrid(false);
    setAlternatingRowColors(true);
    setFrameShape(QFrame::NoFrame);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* header = horizontalHeader();
    header->setSectionResizeMode(QHeaderView::Interactive);
    header->setStretchLastSection(true);
    header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    const int widths[] = {110, 150, 100, 100, 150};
    for (int column = 0; column < 5; ++column) {
        setColumnWidth(column, widths[column]);
    }
}

void WindowsTable::changeEvent(QEvent* event) {
    if (event->type() == QEvent::PaletteChange) {
        setRows(std::vector<WindowTableRow>(rows));
    }
    QTableWidget::changeEvent(event);
}

void WindowsTable::setRows(const std::vector<WindowTableRow>& newRows) {
    rows = newRows;
    setRowCount(static_cast<int>(rows.size()));
    const QIcon warning =
        symbolIcon("exclamationmark.triangle", designColor(DesignColor::amber, isDark(palette())));
    for (int index = 0; index < static_cast<int>(rows.size()); ++index) {
        const auto& row = rows[std::size_t(index)];
        const QString cells[] = {row.provider,  row.window, row.consumed,
                                 row.remaining, row.reset,  row.source};
        for (int column = 0; column < 6; ++column) {
            auto* item = new QTableWidgetItem(cells[column]);
            item->setData(Qt::AccessibleTextRole, column == 0 ? row.accessibleText : cells[column]);
            if (column == 2 && row.warning) {
                item->setIcon(warning);
                item->setToolTip(Localizable::tr("Nearly used up"));
            }
            setItem(index, column, item);
        }
    }
    // The table is laid out whole inside the page's scroll area.
    int height = horizontalHeader()->height() + 4;
    for (int index = 0; index < rowCount(); ++index) {
        height += rowHeight(index);
    }
    setFixedHeight(height);
}

} // namespace gaugewell
