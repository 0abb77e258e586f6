#pragma once

#include <QCoreApplication>
#include <QString>
#include <initializer_list>
#include <string>

namespace gaugewell {

// Every user-visible text goes through the translation table "Localizable" with its English text as
// key and default: `Localizable::tr("Refresh usage")`. lupdate files these calls under that context.
// Texts written to files or sent over the widget feed are never translated.
struct Localizable {
    Q_DECLARE_TR_FUNCTIONS(Localizable)

public:
    // For texts that were marked where they were made (QT_TRANSLATE_NOOP in the core).
    static QString translated(const std::string& english) { return tr(english.c_str()); }
};

// Fills a table format in the platform convention the table keeps: "%@" takes the next text, "%d"
// the next integer (given as text), "%%" is a percent sign. Arguments are used in order.
QString formatted(const QString& format, std::initializer_list<QString> arguments);

} // namespace gaugewell
