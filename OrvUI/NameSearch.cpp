#include "OrvUI/NameSearch.h"

#include <QLocale>

namespace orv {

bool NameSearch::matches(const QString& name) const {
    return m_wanted.isEmpty() || folded(name).contains(m_wanted);
}

QString NameSearch::folded(const QString& text) {
    // A name that comes from the disk of a Mac may stand decomposed, what is typed is composed. The fold after it is
    // for letters that have two small forms.
    return QLocale().toLower(text.normalized(QString::NormalizationForm_C)).toCaseFolded();
}

} // namespace orv
