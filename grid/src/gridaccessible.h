// The grid as assistive programs see it.
#pragma once

#include <framework/accessible.h>
#include <grid/cgridctrl.h>

namespace grid {

/// A table whose children are numbered from 1: the cells row by row, fixed ones included, and then
/// the headings of sections.
class GridAccessible final : public framework::Accessible {
public:
    explicit GridAccessible(CGridCtrl& grid) : Accessible(grid.Handle()), grid_(&grid) {}

    /// The grid goes; whoever still asks is refused.
    void Leave() noexcept {
        grid_ = nullptr;
        Detach();
    }

    /// The child that stands for the grid's focus cell, 0 without one.
    static long FocusOf(const CGridCtrl& grid) noexcept;
    static long IdOf(const CGridCtrl& grid, CellId cell) noexcept;

    STDMETHODIMP get_accChildCount(long* count) override;
    STDMETHODIMP get_accChild(VARIANT child, IDispatch** object) override;
    STDMETHODIMP get_accName(VARIANT child, BSTR* name) override;
    STDMETHODIMP get_accValue(VARIANT child, BSTR* value) override;
    STDMETHODIMP get_accDescription(VARIANT child, BSTR* description) override;
    STDMETHODIMP get_accRole(VARIANT child, VARIANT* role) override;
    STDMETHODIMP get_accState(VARIANT child, VARIANT* state) override;
    STDMETHODIMP get_accFocus(VARIANT* child) override;
    STDMETHODIMP get_accSelection(VARIANT* children) override;
    STDMETHODIMP accSelect(long flags, VARIANT child) override;
    STDMETHODIMP accLocation(long* left, long* top, long* width, long* height,
                             VARIANT child) override;
    STDMETHODIMP accNavigate(long direction, VARIANT start, VARIANT* end) override;
    STDMETHODIMP accHitTest(long left, long top, VARIANT* child) override;
    STDMETHODIMP accDoDefaultAction(VARIANT child) override;
    STDMETHODIMP put_accValue(VARIANT child, BSTR value) override;

private:
    /// Neither cell nor section for the grid itself.
    struct Child {
        CellId cell;
        std::optional<std::size_t> section;
        bool IsGrid() const noexcept { return !section && !cell.IsValid(); }
    };

    /// Calls `action` for a child that exists; refuses others, and turns what it throws into an
    /// error.
    template <typename Action>
    HRESULT With(const VARIANT& child, Action action);
    std::string NameOf(const Child& child) const;
    long StateOf(const Child& child) const;
    std::optional<RECT> AreaOf(const Child& child) const;

    CGridCtrl* grid_;
};

}  // namespace grid
