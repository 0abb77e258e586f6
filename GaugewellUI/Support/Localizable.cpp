#include "Localizable.h"

namespace gaugewell {

QString formatted(const QString& format, std::initializer_list<QString> arguments) {
    auto next = arguments.begin();
    QString result;
    result.reserve(format.size());
    for (qsizetype index = 0; index < format.size(); ++index) {
        const QChar character = format.at(index);
        if (character != u'%' || index + 1 == format.size()) {
            result.append(character);
            continue;
        }
        const QChar specifier = format.at(index + 1);
        if (specifier == u'%') {
            result.append(u'%');
            ++index;
        } else if ((specifier == u'@' || specifier == u'd') && next != arguments.end()) {
            result.append(*next++);
            ++index;
        } else {
            result.append(character);
        }
    }
    return result;
}

} // namespace gaugewell
