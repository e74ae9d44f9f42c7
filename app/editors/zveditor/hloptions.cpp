#include "app/editors/zveditor/hloptions.h"

#include "app/editors/zveditor/zveditor.h"
#include "app/widgets/colorcombo.h"
#include "zvwidgets/zveditor/highlight.h"
#include "zvwidgets/zveditor/highlight/highlightmanager.h"
#include "zvwidgets/zveditor/textmanager.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QSet>
#include <QSettings>

#include <iterator>
#include <span>

using vesk::ColorCombo;

namespace zvwidgets {

namespace {

constexpr int italicBit = 1;
constexpr int boldBit = 2;

/// The attributes up to the first null; there is none if the table is full.
std::span<TextAttribute *const> attributesOf(const HLConfigData &data)
{
    const auto end = std::find(std::begin(data.attributes), std::end(data.attributes), nullptr);
    return {std::begin(data.attributes), end};
}

/// Two items of one name share their settings: the first stands for both.
TextAttribute *findAttribute(const HLConfigData &data, const QString &item)
{
    const auto all = attributesOf(data);
    const auto found = std::find_if(all.begin(), all.end(), [&item](const TextAttribute *each) {
        return each->itemName == item;
    });
    return found == all.end() ? nullptr : *found;
}

QString styleOf(const TextAttribute &attribute)
{
    QString style;
    if (attribute.fontType & italicBit)
        style += u'i';
    if (attribute.fontType & boldBit)
        style += u'b';
    return style;
}

} // namespace

HLOptions::HLOptions(QWidget *parent, const char *name, bool modal, unsigned int flags)
    : HLOptionsBase(parent, name, modal, flags), manager(vesk::ZVEditor::manager())
{
    labelAutodetection->hide();
    buttonAutodetection->hide();
    connect(buttonAutodetection, &QPushButton::clicked, this, &HLOptions::configureAutodetection);
    const QStringList names = manager->highlightsNames();
    for (const QString &each : names)
        addDefinition(each);
    connect(color, &ColorCombo::activated, this, &HLOptions::itemChanged);
    connect(bgColor, &ColorCombo::activated, this, &HLOptions::itemChanged);
    connect(checkBold, &QCheckBox::toggled, this, &HLOptions::itemChanged);
    connect(checkItalic, &QCheckBox::toggled, this, &HLOptions::itemChanged);
    connect(lineFileMask, &QLineEdit::textChanged, this, &HLOptions::maskChanged);
    connect(listHl, &QListWidget::currentTextChanged, this, &HLOptions::hlSelected);
    connect(listItems, &QListWidget::currentTextChanged, this, &HLOptions::itemSelected);
    listHl->sortItems();
    listHl->setCurrentRow(0);
}

HLOptions::~HLOptions() = default;

/// Of several definitions of one name the newest counts.
void HLOptions::addDefinition(const QString &name)
{
    std::unique_ptr<HLConfigData> &made = hlDataDict[name];
    if (made)
        return;
    listHl->addItem(name);
    made = std::make_unique<HLConfigData>();
    made->name = name;
    made->fileMasks = TextHighlightManager::highlights(manager).find(name)->mask;
    const std::unique_ptr<TextHighlight> highlight(TextHighlightManager::highlight(manager, name));
    for (int i = 0; i < TextHighlight::tableSize && highlight->attributeList[i]; ++i) {
        attributes.push_back(std::make_unique<TextAttribute>(*highlight->attributeList[i]));
        made->attributes[i] = attributes.back().get();
    }
}

void HLOptions::hlSelected(const QString &name)
{
    if (lockUpdate)
        return;
    listItems->clear();
    const auto found = hlDataDict.find(name);
    currentHlData = found == hlDataDict.end() ? nullptr : found->second.get();
    if (!currentHlData) {
        qWarning("HLOptions: no highlight is called \"%s\"", qPrintable(name));
        return;
    }
    for (const TextAttribute *attribute : attributesOf(*currentHlData))
        listItems->addItem(attribute->itemName);
    {
        const QScopedValueRollback locked(lockUpdate, true);
        lineFileMask->setText(currentHlData->fileMasks);
        lineFileMask->setCursorPosition(0);
    }
    listItems->setCurrentRow(0);
    if (listItems->count() == 0)
        itemSelected(QString());
}

void HLOptions::itemSelected(const QString &item)
{
    if (lockUpdate)
        return;
    currentAttribute = currentHlData ? findAttribute(*currentHlData, item) : nullptr;
    for (QWidget *widget : std::initializer_list<QWidget *>{color, bgColor, checkBold, checkItalic})
        widget->setEnabled(currentAttribute);
    if (!currentAttribute)
        return;
    const QScopedValueRollback locked(lockUpdate, true);
    color->setColor(currentAttribute->color);
    bgColor->setColor(currentAttribute->bgcolor);
    checkBold->setChecked(currentAttribute->fontType & boldBit);
    checkItalic->setChecked(currentAttribute->fontType & italicBit);
}

void HLOptions::itemChanged()
{
    if (lockUpdate || !currentAttribute)
        return;
    currentAttribute->color = color->color();
    currentAttribute->bgcolor = bgColor->color();
    currentAttribute->usebg = currentAttribute->bgcolor.isValid();
    currentAttribute->fontType =
        (checkBold->isChecked() ? boldBit : 0) + (checkItalic->isChecked() ? italicBit : 0);
}

void HLOptions::maskChanged()
{
    if (!lockUpdate && currentHlData)
        currentHlData->fileMasks = lineFileMask->text();
}

void HLOptions::configureAutodetection()
{}

void HLOptions::accept()
{
    qDebug("accept");
    HighlightDataDict &registry = TextHighlightManager::highlights(manager);
    for (const auto &[name, edited] : hlDataDict) {
        store(*edited);
        registry.find(name)->mask = edited->fileMasks;
    }
    manager->updateHighlight();
    QDialog::accept();
}

/// Under the keys that the highlights read.
void HLOptions::store(const HLConfigData &edited) const
{
    QSettings *const config = manager->globalConfig();
    const QString prefix = highlightSettingsKey(manager) + u'/' + edited.name;
    config->setValue(prefix + QLatin1String(" wildcards"), edited.fileMasks);
    for (const TextAttribute *attribute : attributesOf(edited)) {
        if (findAttribute(edited, attribute->itemName) != attribute)
            continue;
        const QString key = prefix + u'/' + attribute->itemName;
        const QColor &background = attribute->bgcolor;
        config->setValue(key + QLatin1String("/style"), styleOf(*attribute));
        config->setValue(key + QLatin1String("/color"), attribute->color.name());
        config->setValue(key + QLatin1String("/bgcolor"),
                         background.isValid() ? background.name() : QString());
    }
}

} // namespace zvwidgets
