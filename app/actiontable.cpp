#include "app/actiontable.h"

#include "app/actions.h"
#include "app/shell.h"
#include "app/utils.h"

#include <QCoreApplication>
#include <QMetaObject>

namespace vesk {

namespace {

/// SLOT() puts a digit before the signature.
bool hasSlot(const QObject *receiver, const char *slot)
{
    const QByteArray signature = QMetaObject::normalizedSignature(slot + 1);
    return receiver->metaObject()->indexOfSlot(signature) >= 0;
}

QString labelOf(const ActionRow &row, const QObject *receiver, Labels labels)
{
    if (labels == Labels::Translated)
        return QCoreApplication::translate(receiver->metaObject()->className(), row.label);
    return QString::fromLatin1(row.label);
}

} // namespace

void addActions(QObject *receiver, std::span<const ActionRow> rows, Labels labels)
{
    for (const ActionRow &row : rows) {
        Q_ASSERT_X(hasSlot(receiver, row.slot), row.name, row.slot);
        Action *const action =
            Actions::createAction(labelOf(row, receiver, labels), QString::fromLatin1(row.name),
                                  row.key.toCombined(), receiver, row.slot);
        if (row.icon)
            action->setIcon(Utils::iconSet(QString::fromLatin1(row.icon)));
        if (!row.group)
            continue;
        ActionGroup *const group = Shell::self()->actionGroup(QString::fromLatin1(row.group));
        if (row.separator == ActionRow::Separator::Before)
            group->addSeparator();
        group->add(action);
        if (row.separator == ActionRow::Separator::After)
            group->addSeparator();
    }
}

} // namespace vesk
