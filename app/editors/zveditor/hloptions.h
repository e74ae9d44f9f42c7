#pragma once

#include "app/editors/zveditor/hloptionsbase.h"

#include <map>
#include <memory>
#include <vector>

namespace zvwidgets {

struct HLConfigData;
class TextEditorManager;
struct TextAttribute;

/// Edits file masks, colours and styles of all highlight definitions. It works on copies:
/// accept() stores all of them and shows them in the open editors, any other end of the
/// dialog leaves no trace. The dialog is for the manager of `ZVEditor`.
class HLOptions : public HLOptionsBase
{
    Q_OBJECT
public:
    explicit HLOptions(QWidget *parent = nullptr, const char *name = nullptr, bool modal = false,
                       unsigned int flags = 0);
    ~HLOptions() override;

public slots:
    void hlSelected(const QString &name);
    void itemSelected(const QString &item);
    void itemChanged();
    void maskChanged();
    /// There is nothing to configure; its button is hidden.
    void configureAutodetection();
    void accept() override;

private:
    void addDefinition(const QString &name);
    void store(const HLConfigData &edited) const;

    TextEditorManager *const manager;
    std::map<QString, std::unique_ptr<HLConfigData>> hlDataDict;
    std::vector<std::unique_ptr<TextAttribute>> attributes; ///< those of `hlDataDict`
    HLConfigData *currentHlData = nullptr;
    TextAttribute *currentAttribute = nullptr;
    bool lockUpdate = false; ///< the widgets are being filled, not edited
};

} // namespace zvwidgets
