#include "app/editors/zveditor/interruptedsaves.h"

#include "app/message.h"
#include "zvwidgets/zvfiles/keptcopies.h"

#include <vector>

using zvwidgets::InterruptedSave;

namespace vesk {

namespace {

/// In the order of the buttons.
enum Choice
{
    NewText,
    FormerText,
    Leave
};

int ask(const InterruptedSave &save)
{
    const auto shown = [](const QString &path) {
        return path.isEmpty() ? InterruptedSaves::tr("(no longer there)") : path;
    };
    const QString question =
        InterruptedSaves::tr("The program ended while it was saving the file\n%1\n"
                             "The new text is kept in\n%2\nand the former one in\n%3\n"
                             "Which one is the file to have? If it is left as it is, these two "
                             "stay where they are.")
            .arg(save.target(), shown(save.fresh()), shown(save.former()));
    return Message::warning(InterruptedSaves::tr("Warning"), question,
                            InterruptedSaves::tr("&New text"), InterruptedSaves::tr("&Former text"),
                            InterruptedSaves::tr("&Leave as it is"), NewText, -1);
}

/// True if the file changed.
bool settleOne(InterruptedSave &save)
{
    for (;;) {
        const int choice = ask(save);
        if (choice != NewText && choice != FormerText) {
            save.dismiss();
            return false;
        }
        QString error;
        if (choice == NewText ? save.restoreFresh(&error) : save.restoreFormer(&error))
            return true;
        Message::critical(
            InterruptedSaves::tr("Error"),
            InterruptedSaves::tr("Can not write file\n%1\n%2").arg(save.target(), error),
            InterruptedSaves::tr("Ok"));
    }
}

} // namespace

QStringList InterruptedSaves::settle()
{
    QStringList changed;
    std::vector<InterruptedSave> found = InterruptedSave::findAll();
    for (InterruptedSave &save : found) {
        if (settleOne(save))
            changed.append(save.target());
    }
    return changed;
}

} // namespace vesk
