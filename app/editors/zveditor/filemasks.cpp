#include "app/editors/zveditor/filemasks.h"

#include "zvwidgets/zveditor/pattern/filemask.h"

namespace vesk {

FileMasks::FileMasks(const QString &wanted)
{
    const QStringList list = zvwidgets::splitFileMasks(wanted);
    if (!list.contains(u"*"))
        masks = list.join(u';');
}

bool FileMasks::match(const QString &name) const
{
    return masks.isEmpty() || zvwidgets::matchesFileMasks(masks, name);
}

} // namespace vesk
