// The attribute grid of the form.
#pragma once

#include "hierarchy.h"

#include <fltkilnutil/fltattr.h>
#include <grid/cgridctrl.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

/// Two columns: the caption of an attribute, fixed, and its value. Both cells of a row carry the
/// attribute's descriptor as their datum.
class tessera::Hierarchy::CGridEx : public grid::CGridCtrl {
public:
    /// One heading row alone.
    void Reset();
    /// Puts the headings, in the host's language, into the heading row.
    void NameColumns();
    /// A row for each attribute of the set; none can be edited when `readOnly`. The focus cell and
    /// what is scrolled into view stay where they still exist.
    void ShowAttributes(const FltAttrGroup& set, bool readOnly);
    /// Sets the editor of an attribute's value by what the attribute says of itself.
    void RenewEditor(int attribute, const FltAttrDesc& descriptor, bool readOnly);
    /// Marks values, an element for each attribute, as those of other selected nodes differ.
    /// Another set shown has no marks.
    void MarkDiffering(std::vector<bool> differing);
    /// What an attribute of the set that is shown means, with its caption.
    std::string Describe(int row) const;
    /// Asked for the unit of lengths in the node's database.
    std::function<std::string()> lengthUnit;

    /// Column 0 one and a half times as wide as its contents, both filling the width.
    void SizeColumns();

protected:
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;
    Look LookOf(grid::CellId cell) const override;
    std::string AccessibleName() const override;
    std::string DescriptionOf(grid::CellId cell) const override;
    void OnSectionsFolded() override;
    void FillList(int row, int column, grid::CInPlaceList& list) override;
    int FindChoice(int row, int column, std::string_view typed) override;

private:
    void ShowSections(const FltAttrGroup& set);

    const FltAttrGroup* set_ = nullptr;  ///< shown; whose sections are the grid's
    /// Of kinds that have been shown, a bit for each section.
    std::map<FltNodeKind, std::uint32_t> folded_;
    std::vector<bool> differing_;
};
