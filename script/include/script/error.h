// What ends a script before its end.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <utility>

namespace script {

/// A place in a script. Lines and columns count from 1; columns count bytes.
struct Position {
    std::size_t line = 1;
    std::size_t column = 1;
};

/// What a verb throws when it refuses: one sentence for the script's author. The engine adds the
/// place of the call and throws it on as an `Error`.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// A fault in a script, or one that a script ran into. `what()` is "file:line:column: message".
class Error : public std::runtime_error {
public:
    Error(const std::string& file, Position position, std::string message)
        : std::runtime_error(file + ":" + std::to_string(position.line) + ":" +
                             std::to_string(position.column) + ": " + message),
          file_(file),
          position_(position),
          message_(std::move(message)) {}

    /// The script's name, as the engine got it.
    const std::string& file() const noexcept { return file_; }
    Position position() const noexcept { return position_; }
    /// Without the place.
    const std::string& message() const noexcept { return message_; }

private:
    std::string file_;
    Position position_;
    std::string message_;
};

}  // namespace script
