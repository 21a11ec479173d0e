#include "cli/Program.h"

int main(int argc, char** argv) {
    return salvor::cli::runProgram(argc, argv);
}
