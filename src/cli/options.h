// SPDX-License-Identifier: MIT
//
// What the command line asks for.

#ifndef VORN_CLI_OPTIONS_H
#define VORN_CLI_OPTIONS_H

#include <string>
#include <vector>

namespace cli
{

struct Options
{
    std::string strCommand;

    std::string strDatabase;
    std::string strDefinition;
    std::string strTable;
    double dWaitSeconds = 5.0;
    bool blJsonErrors = false;

    std::vector<std::string> arguments;  // of the filter, or of the record that is created
    std::vector<std::string> values;     // set: what the records get
    std::string strFormat;               // "" for what fits where the output goes
    std::string strSort;
    std::string strFields;
    long long iLimit = -1;
    long long iOffset = -1;

    bool blAll = false;
    bool blYes = false;
    bool blDryRun = false;
    bool blUpsert = false;
    bool blCells = false;
    std::string strFile;     // import and init: what to read; "-" is standard input
    std::string strOutput;   // export and init: where to write; "" is standard output
    std::string strSkipBad;  // import: where bad records go
};

// Parses the command line; --help and mistakes are told here. Returns the exit status to end with, or -1 to go on.
int parse(int argc, char** argv, Options& options);

}  // namespace cli

#endif  // VORN_CLI_OPTIONS_H
