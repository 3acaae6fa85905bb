#include "gridaccessible.h"

#include <base/utf16.h>

#include <algorithm>

namespace grid {

namespace {

long cellsOf(const CGridCtrl& grid) noexcept {
    return static_cast<long>(grid.RowCount()) * grid.ColumnCount();
}

/// The children that are selected, for a selection of more than one.
class SelectedChildren final : public IEnumVARIANT {
public:
    explicit SelectedChildren(std::vector<long> children, std::size_t next = 0)
        : children_(std::move(children)), next_(next) {}
    virtual ~SelectedChildren() = default;

    STDMETHODIMP QueryInterface(REFIID id, void** object) override {
        if (!object) return E_POINTER;
        *object = id == IID_IUnknown || id == IID_IEnumVARIANT ? this : nullptr;
        if (!*object) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override {
        return static_cast<ULONG>(::InterlockedIncrement(&references_));
    }
    STDMETHODIMP_(ULONG) Release() override {
        const LONG left = ::InterlockedDecrement(&references_);
        if (left == 0) delete this;
        return static_cast<ULONG>(left);
    }
    STDMETHODIMP Next(ULONG count, VARIANT* values, ULONG* fetched) override {
        ULONG given = 0;
        for (; given < count && next_ < children_.size(); ++given) {
            values[given].vt = VT_I4;
            values[given].lVal = children_[next_++];
        }
        if (fetched) *fetched = given;
        return given == count ? S_OK : S_FALSE;
    }
    STDMETHODIMP Skip(ULONG count) override {
        const std::size_t left = children_.size() - next_;
        next_ += std::min<std::size_t>(count, left);
        return count <= left ? S_OK : S_FALSE;
    }
    STDMETHODIMP Reset() override {
        next_ = 0;
        return S_OK;
    }
    STDMETHODIMP Clone(IEnumVARIANT** copy) override {
        if (!copy) return E_POINTER;
        try {
            *copy = new SelectedChildren(children_, next_);
        } catch (...) {
            return E_OUTOFMEMORY;
        }
        return S_OK;
    }

private:
    LONG references_ = 1;
    std::vector<long> children_;
    std::size_t next_;
};

}  // namespace

long GridAccessible::IdOf(const CGridCtrl& grid, CellId cell) noexcept {
    if (!grid.IsValid(cell)) return CHILDID_SELF;
    return static_cast<long>(cell.row) * grid.ColumnCount() + cell.column + 1;
}

long GridAccessible::FocusOf(const CGridCtrl& grid) noexcept {
    if (const auto heading = grid.FocusedHeading())
        return cellsOf(grid) + 1 + static_cast<long>(*heading);
    return IdOf(grid, grid.FocusCell());
}

template <typename Action>
HRESULT GridAccessible::With(const VARIANT& child, Action action) {
    if (!grid_) return CO_E_OBJNOTCONNECTED;
    if (child.vt != VT_I4) return E_INVALIDARG;
    const long cells = cellsOf(*grid_);
    const long id = child.lVal;
    const auto sections = static_cast<long>(grid_->Sections().size());
    if (id < 0 || id > cells + sections) return E_INVALIDARG;
    Child found;
    if (id > cells)
        found.section = static_cast<std::size_t>(id - cells - 1);
    else if (id > 0)
        found.cell = {static_cast<int>((id - 1) / grid_->ColumnCount()),
                      static_cast<int>((id - 1) % grid_->ColumnCount())};
    try {
        return action(found);
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (...) {
        return E_FAIL;
    }
}

// A cell is called by what stands before it in its row, and in a table of several columns by the
// column's heading too.
std::string GridAccessible::NameOf(const Child& child) const {
    if (child.section) return grid_->Sections()[*child.section].title;
    if (child.IsGrid()) return grid_->AccessibleName();
    const auto [row, column] = child.cell;
    if (grid_->IsFixed(child.cell)) return grid_->CellText(row, column);
    const bool hasCaption = grid_->fixedColumns_ > 0;
    std::string name = hasCaption ? grid_->CellText(row, grid_->fixedColumns_ - 1) : "";
    if (grid_->fixedRows_ > 0 && grid_->ColumnCount() > grid_->fixedColumns_ + 1) {
        if (!name.empty()) name += ", ";
        name += grid_->CellText(grid_->fixedRows_ - 1, column);
    }
    return name;
}

long GridAccessible::StateOf(const Child& child) const {
    long state = grid_->IsEnabled() ? 0 : STATE_SYSTEM_UNAVAILABLE;
    const long focusable = STATE_SYSTEM_FOCUSABLE | STATE_SYSTEM_SELECTABLE;
    if (child.IsGrid())
        return state | STATE_SYSTEM_FOCUSABLE | (grid_->focused_ ? STATE_SYSTEM_FOCUSED : 0);
    const bool isFixed = !child.section && grid_->IsFixed(child.cell);
    const bool isHidden = !child.section && grid_->lines_.IsHidden(child.cell.row);
    if (isHidden)
        state |= STATE_SYSTEM_INVISIBLE;
    else if (!AreaOf(child))
        state |= STATE_SYSTEM_OFFSCREEN;
    if (isFixed) return state | STATE_SYSTEM_READONLY;
    CellId cell = child.cell;
    bool isFocus = cell == grid_->focus_ && !isHidden;
    if (child.section) {
        const Section& section = grid_->Sections()[*child.section];
        state |= section.folded ? STATE_SYSTEM_COLLAPSED : STATE_SYSTEM_EXPANDED;
        if (!section.folded) return state;
        cell = {section.first, grid_->fixedColumns_};
        isFocus = grid_->FocusedHeading() == child.section;
    } else if (!grid_->CanEdit(cell)) {
        state |= STATE_SYSTEM_READONLY;
    }
    state |= focusable;
    if (grid_->selection_.Contains(cell)) state |= STATE_SYSTEM_SELECTED;
    if (isFocus && grid_->focused_) state |= STATE_SYSTEM_FOCUSED;
    return state;
}

// On the screen; nothing when it is not shown.
std::optional<RECT> GridAccessible::AreaOf(const Child& child) const {
    std::optional<RECT> area = child.IsGrid()  ? grid_->ClientRect()
                               : child.section ? grid_->SectionRect(*child.section)
                                               : grid_->CellRect(child.cell);
    if (area) ::MapWindowPoints(grid_->Handle(), nullptr, reinterpret_cast<POINT*>(&*area), 2);
    return area;
}

// ---------------------------------------------------------------- what is there

STDMETHODIMP GridAccessible::get_accChildCount(long* count) {
    if (!count) return E_POINTER;
    if (!grid_) return CO_E_OBJNOTCONNECTED;
    *count = cellsOf(*grid_) + static_cast<long>(grid_->Sections().size());
    return S_OK;
}

// The children are no objects of their own.
STDMETHODIMP GridAccessible::get_accChild(VARIANT child, IDispatch** object) {
    if (!object) return E_POINTER;
    *object = nullptr;
    return With(child, [](const Child&) { return S_FALSE; });
}

STDMETHODIMP GridAccessible::get_accName(VARIANT child, BSTR* name) {
    return With(child, [&](const Child& found) { return Give(NameOf(found), name); });
}

STDMETHODIMP GridAccessible::get_accValue(VARIANT child, BSTR* value) {
    return With(child, [&](const Child& found) {
        const bool isCell = found.cell.IsValid() && !grid_->IsFixed(found.cell);
        return Give(isCell ? grid_->CellText(found.cell.row, found.cell.column) : "", value);
    });
}

STDMETHODIMP GridAccessible::get_accDescription(VARIANT child, BSTR* description) {
    return With(child, [&](const Child& found) {
        return Give(found.cell.IsValid() ? grid_->DescriptionOf(found.cell) : "", description);
    });
}

STDMETHODIMP GridAccessible::get_accRole(VARIANT child, VARIANT* role) {
    return With(child, [&](const Child& found) {
        const CellId cell = found.cell;
        if (found.section) return Give(ROLE_SYSTEM_OUTLINEITEM, role);
        if (found.IsGrid()) return Give(ROLE_SYSTEM_TABLE, role);
        if (!grid_->IsFixed(cell)) return Give(ROLE_SYSTEM_CELL, role);
        return Give(
            cell.row < grid_->FixedRowCount() ? ROLE_SYSTEM_COLUMNHEADER : ROLE_SYSTEM_ROWHEADER,
            role);
    });
}

STDMETHODIMP GridAccessible::get_accState(VARIANT child, VARIANT* state) {
    return With(child, [&](const Child& found) { return Give(StateOf(found), state); });
}

STDMETHODIMP GridAccessible::get_accFocus(VARIANT* child) {
    if (!child) return E_POINTER;
    if (!grid_) return CO_E_OBJNOTCONNECTED;
    child->vt = VT_EMPTY;
    return grid_->focused_ ? Give(FocusOf(*grid_), child) : S_FALSE;
}

STDMETHODIMP GridAccessible::get_accSelection(VARIANT* children) {
    if (!children) return E_POINTER;
    children->vt = VT_EMPTY;
    VARIANT self{};
    self.vt = VT_I4;
    return With(self, [&](const Child&) {
        const CellRange selected = grid_->Selection();
        if (selected.IsEmpty()) return S_FALSE;
        std::vector<long> ids;
        for (int row = selected.first.row; row <= selected.last.row; ++row)
            for (int column = selected.first.column; column <= selected.last.column; ++column)
                ids.push_back(IdOf(*grid_, {row, column}));
        if (ids.size() == 1) return Give(ids.front(), children);
        children->punkVal = new SelectedChildren(std::move(ids));
        children->vt = VT_UNKNOWN;
        return S_OK;
    });
}

// ---------------------------------------------------------------- where it is

STDMETHODIMP GridAccessible::accLocation(long* left, long* top, long* width, long* height,
                                         VARIANT child) {
    if (!left || !top || !width || !height) return E_POINTER;
    *left = *top = *width = *height = 0;
    return With(child, [&](const Child& found) {
        const std::optional<RECT> area = AreaOf(found);
        if (!area) return S_FALSE;
        *left = area->left;
        *top = area->top;
        *width = area->right - area->left;
        *height = area->bottom - area->top;
        return S_OK;
    });
}

STDMETHODIMP GridAccessible::accHitTest(long left, long top, VARIANT* child) {
    if (!child) return E_POINTER;
    if (!grid_) return CO_E_OBJNOTCONNECTED;
    child->vt = VT_EMPTY;
    const POINT at = grid_->ToClient({left, top});
    const RECT client = grid_->ClientRect();
    if (!::PtInRect(&client, at)) return S_FALSE;
    if (const auto heading = grid_->HeadingAt(at))
        return Give(cellsOf(*grid_) + 1 + static_cast<long>(*heading), child);
    return Give(IdOf(*grid_, grid_->CellAt(at)), child);
}

STDMETHODIMP GridAccessible::accNavigate(long direction, VARIANT start, VARIANT* end) {
    if (!end) return E_POINTER;
    end->vt = VT_EMPTY;
    if (IsSelf(start) && direction != NAVDIR_FIRSTCHILD && direction != NAVDIR_LASTCHILD)
        return Accessible::accNavigate(direction, start, end);
    return With(start, [&](const Child& from) {
        const long children = cellsOf(*grid_) + static_cast<long>(grid_->Sections().size());
        const auto step = [&](int rows, int columns) {
            const long id = IdOf(*grid_, {from.cell.row + rows, from.cell.column + columns});
            return from.cell.IsValid() ? id : CHILDID_SELF;
        };
        long id = CHILDID_SELF;
        switch (direction) {
            case NAVDIR_FIRSTCHILD:
                id = from.IsGrid() && children > 0 ? 1 : CHILDID_SELF;
                break;
            case NAVDIR_LASTCHILD:
                id = from.IsGrid() ? children : CHILDID_SELF;
                break;
            case NAVDIR_NEXT:
                id = start.lVal < children ? start.lVal + 1 : CHILDID_SELF;
                break;
            case NAVDIR_PREVIOUS:
                id = start.lVal - 1;
                break;
            case NAVDIR_UP:
                id = step(-1, 0);
                break;
            case NAVDIR_DOWN:
                id = step(1, 0);
                break;
            case NAVDIR_LEFT:
                id = step(0, -1);
                break;
            case NAVDIR_RIGHT:
                id = step(0, 1);
                break;
            default:
                return E_INVALIDARG;
        }
        return id == CHILDID_SELF ? S_FALSE : Give(id, end);
    });
}

// ---------------------------------------------------------------- what can be done

STDMETHODIMP GridAccessible::accSelect(long flags, VARIANT child) {
    return With(child, [&](const Child& found) {
        if (!grid_->IsEnabled()) return S_FALSE;
        if (flags & SELFLAG_TAKEFOCUS) grid_->SetFocus();
        CellId cell = found.cell;
        if (found.section) cell = {grid_->Sections()[*found.section].first, grid_->fixedColumns_};
        if (found.IsGrid()) return flags == SELFLAG_TAKEFOCUS ? S_OK : E_INVALIDARG;
        if (!grid_->IsValid(cell) || grid_->IsFixed(cell)) return S_FALSE;
        if (flags & (SELFLAG_ADDSELECTION | SELFLAG_REMOVESELECTION)) return E_INVALIDARG;
        grid_->MoveFocus(cell, (flags & SELFLAG_EXTENDSELECTION) != 0);
        return S_OK;
    });
}

// Edits a cell, folds or unfolds a section.
STDMETHODIMP GridAccessible::accDoDefaultAction(VARIANT child) {
    return With(child, [&](const Child& found) {
        if (!grid_->IsEnabled()) return S_FALSE;
        if (found.section) {
            grid_->UserFolds(*found.section, !grid_->Sections()[*found.section].folded);
            return S_OK;
        }
        if (!grid_->CanEdit(found.cell)) return S_FALSE;
        grid_->SetFocus();
        return grid_->BeginEdit(found.cell) ? S_OK : S_FALSE;
    });
}

STDMETHODIMP GridAccessible::put_accValue(VARIANT child, BSTR value) {
    return With(child, [&](const Child& found) -> HRESULT {
        if (!value) return E_INVALIDARG;
        if (!grid_->IsEnabled() || !grid_->CanEdit(found.cell)) return E_ACCESSDENIED;
        grid_->EndEdit(false);
        if (!grid_) return CO_E_OBJNOTCONNECTED;
        return grid_->ChangeText(found.cell, base::toUtf8(value)) ? S_OK : E_FAIL;
    });
}

}  // namespace grid
