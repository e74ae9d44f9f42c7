#pragma once

#include <QKeyCombination>

#include <span>

class QObject;

namespace vesk {

constexpr QKeyCombination noKey = QKeyCombination::fromCombined(0);

/// One command of a component, as data.
struct ActionRow
{
    /// A separator in the group, beside this action.
    enum class Separator
    {
        None,
        Before,
        After
    };

    /// "owner/verb", or "owner/toolbar/verb" for the twin on a tool bar.
    const char *name;
    const char *label;
    QKeyCombination key;
    /// The text of SLOT().
    const char *slot;
    /// Null for none.
    const char *icon;
    /// The path of a group of the shell; null for none.
    const char *group;
    Separator separator = Separator::None;
};

enum class Labels
{
    AsTheyStand,
    /// Marked with QT_TRANSLATE_NOOP for the receiver's class.
    Translated
};

/// Creates the actions of \a rows in order, each for its slot of \a receiver, and
/// puts them into their groups.
void addActions(QObject *receiver, std::span<const ActionRow> rows,
                Labels labels = Labels::AsTheyStand);

} // namespace vesk
