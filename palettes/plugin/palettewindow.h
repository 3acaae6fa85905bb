// The window of the palettes.
#pragma once

#include "fieldgrid.h"
#include "resource.h"
#include "scenewindow.h"
#include "swatches.h"
#include "thumbnails.h"

#include <palettes/lightpoints.h>
#include <palettes/picturefields.h>
#include <palettes/references.h>

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

class INode;

namespace palettes {

/// A modeless window beside the host's: the palettes of one database, a tab for each, and the
/// fields of the entry that has the focus.
class PaletteWindow : public SceneWindow {
public:
    PaletteWindow();
    ~PaletteWindow() override;

    /// Shows the window in front, for the database of the selection.
    void open(Interface& host);

protected:
    bool OnInitDialog() override;
    bool PreTranslateMessage(MSG& message) override;
    void OnDestroy() override;
    void OnOK() override;
    bool OnCommand(int id, UINT code, HWND control) override;
    bool OnNotify(int id, NMHDR& header, LRESULT& result) override;
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;

private:
    enum class Column : std::uint8_t { kLook, kIndex, kName, kUsers, kNote };

    // What is shown.
    INode* database() const;
    /// Null while there is none, and once the scene has changed since it was read.
    const Database* data() const;
    void listDatabases();
    void read();
    void readScene() override;
    void nameTexts() override;
    void arranged() override;
    bool isEditing() const override { return fields_.Editor() != nullptr; }
    void filter();
    /// Finds the colors that are looked for, and goes to the first if the chosen one is none.
    void filterColors();
    Palette palette() const noexcept { return palette_; }
    bool showsColors() const noexcept { return palette_ == Palette::kColor; }
    void showPalette(Palette palette);
    void showIntensities();
    /// Its color index, at the intensity that is chosen; there are colors.
    std::int32_t chosenColor() const;
    void showFields();
    void showStatus();
    void enableActions();

    // The list.
    HWND list() const noexcept { return Item(IDC_ENTRIES); }
    std::string cell(const Entry& entry, Column column);
    std::string noteOf(const Entry& entry);
    std::uint32_t usersOf(const Entry& entry) const;
    void draw(NMLVCUSTOMDRAW& drawn, LRESULT& result);
    void drawLook(HDC dc, const RECT& area, const Entry& entry);
    void sortBy(int column);
    void fitColumns();
    const Entry* focused() const;
    /// Of an entry, or the entry of the color that is chosen; -1 for none.
    std::int32_t focusedIndex() const;
    void focus(std::size_t place);
    void focusIndex(std::int32_t index);

    // Edits.
    /// The same for one of the database.
    bool attempt(const std::function<void(INode&)>& edit);
    bool setValue(const std::string& field, const std::string& value);
    bool setOfPicture(const std::string& field, const std::string& value);
    void add();
    void copy();
    void remove();
    void choose();
    void compactAll();
    void importFile();
    void selectUsers();
    void assignToSelection();
    void pick();
    /// Converts the light points of the selection: see palettes/lightpoints.h.
    void convertLights(ConvertedLightPoints (*convert)(std::span<INode* const>));

    std::vector<DWORD> databases_;  ///< handles, as the choice lists them
    DWORD chosen_ = 0;              ///< one of them
    std::unique_ptr<Database> data_;
    Usage usage_;
    Palette palette_ = Palette::kColor;
    std::vector<std::uint32_t> rows_;  ///< entries that are shown
    std::vector<bool> foundColors_;
    int sortColumn_ = -1;  ///< the order of the file
    bool isDescending_ = false;
    bool isRefreshing_ = false;
    Swatches swatches_, intensity_;
    FieldGrid fields_;
    std::vector<Field> shownFields_;
    /// Of the picture of the texture that has the focus, behind its own; empty until it is found.
    std::vector<PictureField> pictureFields_;
    std::string picture_;  ///< where it was found
    Sides sides_;
    std::unique_ptr<Thumbnails> thumbnails_;
};

}  // namespace palettes
