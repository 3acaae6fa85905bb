// The utility: a rollup page in the host's utility panel.
#pragma once

#include <kiln/kiln.h>

/// There is one static instance. Both interfaces belong to the host and are null while the utility
/// is closed.
class AvFltUtil : public UtilityObj {
public:
    void BeginEditParams(Interface* host, IUtil* utility) override;
    void EndEditParams(Interface* host, IUtil* utility) override;
    void SelectionSetChanged(Interface*, IUtil*) override {}
    /// The instance is static and stays.
    void DeleteThis() override {}

    static AvFltUtil& instance();

private:
    static INT_PTR CALLBACK panelProc(HWND panel, UINT message, WPARAM wParam, LPARAM lParam);
    INT_PTR handleMessage(HWND panel, UINT message, WPARAM wParam, LPARAM lParam);
    void handleCommand(int control);
    void makeBrowser();
    template <typename Step>
    void stepLod(Step step);

    IUtil* iu = nullptr;
    Interface* ip = nullptr;
    HWND hPanel = nullptr;
};
