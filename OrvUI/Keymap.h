#pragma once

#include <QObject>
#include <QStringList>
#include <QVariantList>

#include <span>

namespace orv {

/// The keys of whatever has some, in one table: shortcuts, hints, the palette and the list of all shortcuts are made of
/// it. A sequence is one as QKeySequence reads it ("Ctrl+Shift+R"), so on macOS "Ctrl" is ⌘ and "Meta" is ⌃; "Ctrl+1…5"
/// stands for five of them. An id that is not in the table is warned of. Lives on the main thread.
class Keymap : public QObject {
    Q_OBJECT

public:
    struct Entry {
        const char* id;
        const char* group;       ///< not translated
        const char* action;      ///< not translated
        const char16_t* keys;    ///< those that do the same, with spaces between them; behind a "|" those not shown
        const char16_t* macKeys; ///< null: the same
        /// The sequence that does it from a terminal too, which keeps the others for its program; null: none does that
        /// others do not. On macOS it has no meaning: there a terminal keeps nothing with ⌘.
        const char16_t* terminalKeys = nullptr;
    };

    using QObject::QObject;

    [[nodiscard]] static std::span<const Entry> entries();
    /// What to show of it, the first one first.
    [[nodiscard]] static QStringList shown(const Entry& entry);
    /// The sequence for a terminal; empty where it has none of its own.
    [[nodiscard]] static QString inTerminal(const Entry& entry);

    /// All sequences that do it, for a Shortcut.
    Q_INVOKABLE static QVariantList of(const QString& id);
    /// The sequence of the one of that index, for an id that stands for several of them.
    Q_INVOKABLE static QString nth(const QString& id, int index);
    /// The first one in the keys of this platform's keyboards, as hints and tooltips show it: "Ctrl Shift R", "⇧⌘R".
    Q_INVOKABLE static QString text(const QString& id);
    /// The same, each for itself.
    Q_INVOKABLE static QStringList keysOf(const QString& id);
    Q_INVOKABLE static QString nthText(const QString& id, int index);

    /// "Ctrl+Shift+R" in the keys of this platform's keyboards.
    [[nodiscard]] static QStringList keys(const QString& sequence);
    /// The same as one text.
    [[nodiscard]] static QString textOf(const QString& sequence);
};

} // namespace orv
