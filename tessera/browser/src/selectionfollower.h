// Keeping the selection of the form and that of the host the same, where the user wants that.
#pragma once

#include "hierarchytree.h"

namespace tessera {

class ClientLink;
class SelectionCommands;

/// Passes a change of either selection on to the other side, once messages are handled again: many
/// changes that follow one another are one. After the tree has been filled anew, and when the form
/// is shown, the host's selection counts.
///
/// The user's choice is kept in the registry. It has an effect with a client that offers commands.
class SelectionFollower {
public:
    /// Posted to the form, to pass on what has changed.
    static constexpr UINT kSettles = WM_APP + 3;

    SelectionFollower(const framework::CWnd& form, HierarchyTree& tree, ClientLink& client,
                      SelectionCommands& selection) noexcept
        : form_(form), tree_(tree), client_(client), selection_(selection) {}

    /// Reads the user's choice.
    void initialise();
    bool isOn() const noexcept { return on_; }
    bool canFollow() const noexcept;
    /// Switches it, and remembers that.
    void turn(bool on);

    /// The form is shown, or no longer.
    void attend(bool shown);
    /// The host's selection has changed, or the tree was filled anew.
    void hostChanged();
    /// The tree is about to be painted: its marks may be others.
    void marksSeen();
    /// The answer to `kSettles`.
    void settle();

private:
    bool isFollowing() const noexcept { return on_ && shown_ && canFollow(); }
    void post();
    void takeFromHost();

    const framework::CWnd& form_;
    HierarchyTree& tree_;
    ClientLink& client_;
    SelectionCommands& selection_;
    bool on_ = false;
    bool shown_ = false;
    bool sending_ = false;      ///< what the host tells meanwhile is our own
    bool hostChanged_ = false;  ///< its selection is to be taken
    bool posted_ = false;
    unsigned passedOn_ = 0;  ///< the state of the marks that both sides have
};

}  // namespace tessera
