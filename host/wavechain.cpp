#include "host/command_line.h"

int main(int argc, char** argv) { return wavechain::CommandLine(argc, argv); }
