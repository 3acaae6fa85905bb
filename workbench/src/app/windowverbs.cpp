#include "windowverbs.h"

#include "mainwindow.h"
#include "screenshot.h"

#include <base/paths.h>
#include <render/pictureverb.h>

#include <filesystem>
#include <string>

namespace workbench {
namespace {

/// The file of a picture that a script names: a PNG file, in `folder` unless it says otherwise.
std::string picturePath(const std::string& name, const std::string& folder) {
    std::filesystem::path path = base::pathFrom(name);
    if (path.empty()) throw script::Failure("a picture needs a name");
    if (!path.has_extension()) path.replace_extension(".png");
    return base::textOf(base::pathFrom(folder) / path);
}

}  // namespace

void addWindowVerbs(MainWindow& window, ScriptLine& line) {
    line.engine().addVerb("viewAll", "", [&window](const script::Arguments&) {
        window.viewport().viewAll();
        return script::Value(script::Done{});
    });
    const auto placed = [&window](const std::string& name) {
        return picturePath(name, window.scripts().pictureFolder());
    };
    render::addPictureVerb(line.engine(), placed);
    line.engine().addVerb("screenshot", "path",
                          [&window, placed](const script::Arguments& arguments) {
                              const std::string path = placed(arguments.text(0));
                              window.drawNow();
                              if (const kiln::Status status = saveScreenshot(path); !status.ok())
                                  throw script::Failure(status.message());
                              return script::Value(path);
                          });
}

}  // namespace workbench
