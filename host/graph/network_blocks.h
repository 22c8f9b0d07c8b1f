// The blocks of a network in files: binary identifier and text token. The comments give the contents.
#pragma once

#include "host/base/four_cc.h"
#include "module/host.h"

namespace velm::host::blocks {

constexpr HostBlockId kNetwork{fourCC("NODS"), "Nodal_Block"}; // in a surface; holds all the others

constexpr HostBlockId kRoot{fourCC("NROT"), "Root"};         // the view of the network's window:
constexpr HostBlockId kLocation{fourCC("NLOC"), "Location"}; // 2 x I4
constexpr HostBlockId kZoom{fourCC("NZOM"), "Zoom"};         // FP
constexpr HostBlockId kDisabled{fourCC("NSTA"), "Disabled"}; // U2

constexpr HostBlockId kVersion{fourCC("NVER"), "Version"}; // I4

constexpr HostBlockId kNodes{fourCC("NNDS"), "Nodes"};   // for each node, the root first, two blocks:
constexpr HostBlockId kServer{fourCC("NSRV"), "Server"}; // string; then the tag, which holds the rest
constexpr HostBlockId kTag{fourCC("NTAG"), "Tag"};
constexpr HostBlockId kRealName{fourCC("NRNM"), "RealName"};       // string: the server's display name
constexpr HostBlockId kName{fourCC("NNME"), "Name"};               // string: unique in the network
constexpr HostBlockId kCoordinates{fourCC("NCRD"), "Coordinates"}; // 2 x I4
constexpr HostBlockId kMode{fourCC("NMOD"), "Mode"};               // I4
constexpr HostBlockId kData{fourCC("NDTA"), "Data"};               // in the server's own format
constexpr HostBlockId kPreview{fourCC("NPRW"), "Preview"};         // string: name of an output
constexpr HostBlockId kComment{fourCC("NCOM"), "Comment"};         // string

constexpr HostBlockId kConnections{fourCC("NCON"), "Connections"}; // for each connection, four strings:
constexpr HostBlockId kInputNode{fourCC("INME"), "NodeName"};
constexpr HostBlockId kInput{fourCC("IINM"), "InputName"};
constexpr HostBlockId kOutputNode{fourCC("IINN"), "InputNodeName"};
constexpr HostBlockId kOutput{fourCC("IONM"), "InputOutputName"};

constexpr int kFormatVersion = 1;

} // namespace velm::host::blocks
