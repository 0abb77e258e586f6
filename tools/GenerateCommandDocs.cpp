// Writes the manual page and the shell completions from the command table that also prints
// --help, so that they never disagree: GenerateCommandDocs VERSION OUTPUT_FOLDER.
#include "app/CommandTable.h"

#include <filesystem>
#include <fstream>
#include <iostream>

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: GenerateCommandDocs VERSION OUTPUT_FOLDER\n";
        return 2;
    }
    const std::filesystem::path folder(argv[2]);
    std::filesystem::create_directories(folder);
    std::ofstream(folder / "gaugewell.1") << gaugewell::manualPage(argv[1]);
    std::ofstream(folder / "gaugewell.bash") << gaugewell::bashCompletion();
    std::ofstream(folder / "_gaugewell") << gaugewell::zshCompletion();
    return 0;
}
