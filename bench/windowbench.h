// Measurements that need windows: the frame that runs them.
//
// One program, for Windows; `./dev bench` runs it under Wine. Its rows go into its one table.
#pragma once

#include <framework/win32.h>
#include <kiln/kiln.h>
#include <tessera/browserexports.h>

#include <functional>
#include <string>
#include <vector>

namespace bench {

/// A row with a figure that stands alone, in `unit`.
void report(const std::string& what, double value, const char* unit);
/// The same for a figure that must not be above `limit`.
void reportWithin(double limit, const std::string& what, double value, const char* unit);
/// A row with a time and what it is measured against, in milliseconds and of the same run. Their
/// ratio must not be above `limit`.
void reportRatio(double limit, const std::string& what, double value, double measure);

/// How long one call takes.
double millisecondsOf(const std::function<void()>& action);
/// The smallest one: what it takes when nothing else on the machine gets in the way. 0 for none.
double fastest(const std::vector<double>& values);
double median(std::vector<double> values);

/// The browser's form of the built module, shown, with an empty tree and a client that answers
/// nothing but the handshakes; and a host's core with an empty scene. One at a time.
class Form {
public:
    Form();
    ~Form();
    Form(const Form&) = delete;
    Form& operator=(const Form&) = delete;

    HWND handle() const noexcept { return form_; }
    HWND control(int id) const noexcept { return ::GetDlgItem(form_, id); }
    HWND tree() const noexcept;
    HWND grid() const noexcept;

    /// A dummy with a stored record of that kind, an OpenFlight opcode; 0 makes one without.
    INode* node(int kind) const;
    tessera::BrowserItem add(tessera::BrowserItem parent, const char* name, INode* node) const;

    /// Paints what has become invalid, until the display has it.
    void paint() const;

private:
    HWND form_ = nullptr;
};

// What is measured, in files of their own.

/// The browser's tree with 100,000 nodes, against a bare tree control.
void browserTree();
/// What opens and shuts many branches of it, against a bare expansion.
void browserBranches();
/// Refreshing it with 487,000 nodes, against filling it.
void browserRefresh();
/// Showing another scene in it, against filling it.
void browserReplacing();
/// Commands on one very large branch of it, against filling it.
void browserBranch();
/// The property grid of the form: an edit of many nodes, showing a node.
void propertyGrid();
/// The grid control by itself, with 100,000 rows.
void gridControl();

}  // namespace bench
