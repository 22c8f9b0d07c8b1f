// The commands, one file each.
#pragma once

#include "host/cli/options.h"

#include <iosfwd>

namespace velm::host {

// Each does what its options say and gives the exit status. Errors are thrown: InputError, UsageError, MachineError.
int runNodes(const Options &options, const NodesOptions &nodes, std::ostream &out);
int runShow(const Options &options, const ShowOptions &show, std::ostream &out);
int runCheck(const Options &options, const CheckCommandOptions &check, std::ostream &out);
int runCompare(const CompareOptions &compare, std::ostream &out, std::ostream &err); // gives a CompareStatus
int runPack(const Options &options, const PackOptions &pack, std::ostream &out, std::ostream &err);
int runUnpack(const Options &options, const UnpackOptions &unpack, std::ostream &out, std::ostream &err);
int runRender(const Options &options, const RenderOptions &render, std::ostream &out, std::ostream &err);

} // namespace velm::host
