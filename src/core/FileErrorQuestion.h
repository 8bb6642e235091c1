#pragma once

namespace korvane {

struct FileError;
class UserInterface;

// What the person chose after a file operation failed.
enum class FileErrorAnswer { Proceed, Stop };

// Shows the failure and asks whether the rest of the work goes on ("Proceed or Stop?").
FileErrorAnswer askToProceedAfter(UserInterface &ui, const FileError &error);

} // namespace korvane
