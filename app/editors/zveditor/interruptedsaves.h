#pragma once

#include <QCoreApplication>
#include <QStringList>

namespace vesk {

/// Files that an earlier run of the program was writing over when it ended.
class InterruptedSaves
{
    Q_DECLARE_TR_FUNCTIONS(vesk::InterruptedSaves)
public:
    /// Asks for each of them which text it is to have, and puts that into it. Returns
    /// the paths of the files that changed. Without any this costs a look into a folder.
    static QStringList settle();
};

} // namespace vesk
