// The frame of a main that takes its options by CLI11.
#pragma once

namespace CLI {
class App;
}

namespace xfm::tool {

// Parses and runs the callbacks. Every error is one line on standard error, "PROGRAM: what is wrong", and exit status 1
// (2 for a wrong command line); so is a standard output that does not take what was printed.
int run(CLI::App& app, int argc, char** argv);

}  // namespace xfm::tool
