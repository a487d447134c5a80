#include <exception>

#include "Commands.h"
#include "Output.h"

int main(int argc, char** argv) {
    try {
        return dolqctl::runCommandLine(argc, argv);
    } catch (const std::exception& error) {
        dolqctl::tell(error.what());
        return dolqctl::kError;
    }
}
