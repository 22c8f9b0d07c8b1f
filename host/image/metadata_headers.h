// The names under which files hold the metadata of pictures.
#pragma once

#include "host/image/picture.h"

#include <string>
#include <string_view>

namespace velm::host {

struct MetadataHeader {
    const char *name;
    std::string PictureMetadata::*member;
};

// Begins the description of files whose format has room for no other metadata; the digest follows.
inline constexpr std::string_view kDigestPrefix = "velm:scene ";

// The header of the workflow: float files hold display values if it is "classic", else linear light.
inline constexpr const char *kWorkflowHeader = "velm:workflow";

inline constexpr MetadataHeader kMetadataHeaders[] = {
    {.name = "scene", .member = &PictureMetadata::scene},
    {.name = "module", .member = &PictureMetadata::module},
    {.name = "version", .member = &PictureMetadata::version},
    {.name = "command", .member = &PictureMetadata::command},
    {.name = "velm:scene", .member = &PictureMetadata::digest},
    {.name = "velm:part", .member = &PictureMetadata::part},
    {.name = "velm:samples", .member = &PictureMetadata::samples},
    {.name = "velm:seed", .member = &PictureMetadata::seed},
    {.name = kWorkflowHeader, .member = &PictureMetadata::workflow},
    {.name = "velm:backdrop", .member = &PictureMetadata::backdrop},
    {.name = "velm:objects", .member = &PictureMetadata::objects},
    {.name = "velm:surfaces", .member = &PictureMetadata::surfaces},
};

} // namespace velm::host
