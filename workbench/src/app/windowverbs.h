// What scripts can do with the workbench's window.
#pragma once

namespace workbench {

class MainWindow;
class ScriptLine;

/// Adds the verbs `viewAll` and `screenshot`. The window must outlive the line.
void addWindowVerbs(MainWindow& window, ScriptLine& line);

}  // namespace workbench
