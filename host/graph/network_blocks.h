// The blocks of a network in files, by what they hold: binary identifier and text token.
#pragma once

#include "module/host.h"

namespace velm::blocks {

constexpr unsigned int identifier(const char (&text)[5]) {
    unsigned int id = 0;
    for (int i = 0; i < 4; ++i) id = id << 8 | static_cast<unsigned char>(text[i]);
    return id;
}

constexpr HostBlockId kNetwork{identifier("NODS"), "Nodal_Block"}; // around it all, in a surface

constexpr HostBlockId kRoot{identifier("NROT"), "Root"};         // of the editor's view:
constexpr HostBlockId kLocation{identifier("NLOC"), "Location"}; // 2 x I4
constexpr HostBlockId kZoom{identifier("NZOM"), "Zoom"};         // FP
constexpr HostBlockId kDisabled{identifier("NSTA"), "Disabled"}; // U2

constexpr HostBlockId kVersion{identifier("NVER"), "Version"}; // I4

constexpr HostBlockId kNodes{identifier("NNDS"), "Nodes"};   // for each node, the root first:
constexpr HostBlockId kServer{identifier("NSRV"), "Server"}; // string, then a tag:
constexpr HostBlockId kTag{identifier("NTAG"), "Tag"};
constexpr HostBlockId kRealName{identifier("NRNM"), "RealName"};       // string: the display name of the kind
constexpr HostBlockId kName{identifier("NNME"), "Name"};               // string: unique in the network
constexpr HostBlockId kCoordinates{identifier("NCRD"), "Coordinates"}; // 2 x I4
constexpr HostBlockId kMode{identifier("NMOD"), "Mode"};               // I4
constexpr HostBlockId kData{identifier("NDTA"), "Data"};               // the server's own
constexpr HostBlockId kPreview{identifier("NPRW"), "Preview"};         // string: an output
constexpr HostBlockId kComment{identifier("NCOM"), "Comment"};         // string

constexpr HostBlockId kConnections{identifier("NCON"), "Connections"}; // for each connection, four strings:
constexpr HostBlockId kInputNode{identifier("INME"), "NodeName"};
constexpr HostBlockId kInput{identifier("IINM"), "InputName"};
constexpr HostBlockId kOutputNode{identifier("IINN"), "InputNodeName"};
constexpr HostBlockId kOutput{identifier("IONM"), "InputOutputName"};

constexpr int kFormatVersion = 1;

} // namespace velm::blocks
