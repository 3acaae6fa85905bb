// The window of what nodes look like.
#pragma once

#include "fieldgrid.h"
#include "scenewindow.h"

#include <palettes/look.h>

#include <memory>
#include <string>
#include <vector>

class INode;
struct NotifyInfo;

namespace palettes {

/// A modeless window beside the host's: what the selected nodes look like, as rows for all of them
/// at once. It follows the selection and the scene.
class LookWindow : public SceneWindow {
public:
    LookWindow();
    ~LookWindow() override;

    /// Shows the window in front, for the selection.
    void open(Interface& host);

protected:
    bool OnInitDialog() override;
    void OnDestroy() override;
    void OnOK() override;
    bool OnCommand(int id, UINT code, HWND control) override;
    bool OnNotify(int id, NMHDR& header, LRESULT& result) override;

private:
    /// A row of the look, or one of the two colors as they count, which have no keys.
    struct Row {
        LookRow look;
        std::string shown;
        bool isOfPalette = false;  ///< chosen from the entries of its palette

        bool isColor() const noexcept { return look.keys.empty() || look.keys.size() == 3; }
    };

    void readScene() override;
    void nameTexts() override;
    void arranged() override;
    bool isEditing() const override { return grid_.Editor() != nullptr; }

    std::vector<INode*> nodes() const;
    std::unique_ptr<Database> database() const;
    FieldRow shownRow(const Look& look, const Database* database, Row& row) const;
    std::vector<std::string> choicesOf(const Row& row) const;
    const Row* focused() const noexcept;
    void enableActions();
    bool setValue(const Row& row, const std::string& value);
    void choose();

    static void selectionChanged(void* window, NotifyInfo*);

    FieldGrid grid_;
    std::vector<Row> rows_;
    std::vector<DWORD> nodes_;  ///< by their handles: they may go
};

}  // namespace palettes
