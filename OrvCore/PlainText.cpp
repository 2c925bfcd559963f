#include "OrvCore/PlainText.h"

namespace orv {

QString withoutColours(const QString& text) {
    QString plain;
    qsizetype at = 0;
    for (qsizetype escape = text.indexOf(u'\x1b'); escape >= 0; escape = text.indexOf(u'\x1b', at)) {
        plain += QStringView(text).sliced(at, escape - at);
        const qsizetype end = text.indexOf(u'm', escape);
        at = end < 0 ? text.size() : end + 1;
    }
    return plain.append(QStringView(text).sliced(at));
}

} // namespace orv
