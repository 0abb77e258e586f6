#include "SectionHeader.h"

#include "Typography.h"

#include <QVBoxLayout>

namespace gaugewell {

SectionHeader::SectionHeader(const QString& titleText, const QString& subtitleText, QWidget* parent)
    : QWidget(parent)
    , title(makeLabel(titleText, TextStyle::title, this))
    , subtitle(makeLabel(subtitleText, TextStyle::callout, this)) {
    makeSecondary(subtitle);
    subtitle->setWordWrap(true);
    subtitle->setVisible(!subtitleText.isEmpty());
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    layout->addWidget(title);
    layout->addWidget(subtitle);
    setAccessibleName(titleText);
}

} // namespace gaugewell
