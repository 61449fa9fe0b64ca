#pragma once

/// What the parts of the conversion from glTF share.

#include "gltf/accessor.h"
#include "gltf/convert/from_gltf.h"
#include "gltf/convert/report.h"
#include "gltf/document.h"
#include "gltf/key_track.h"
#include "tev2_loader/records/extended_properties.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace tev2_gltf
{

/// Bytes of the records that are made. Documents can show one thing any number of times: a scene may take 64 times the
/// document and 16 MiB, all scenes together 256 times the document and 1 GiB.
class Budget
{
public:
    explicit Budget(const gltf::Document& document) : document_(document) {}

    /// Throws gltf::Error where that would be more. Call before allocating.
    void Take(std::size_t bytes, const gltf::Place& place);
    void Take(std::size_t count, std::size_t bytes_each, const gltf::Place& place);

    /// A scene made again does not count again.
    void BeginScene(bool is_new);

private:
    const gltf::Document& document_;
    std::size_t scene_ = 0;
    std::size_t all_ = 0;
    bool counts_ = true;
};

struct FromContext
{
    FromContext(gltf::Document& the_document, FromGltfOptions the_options, ConversionReport& the_report);

    gltf::Document& document;
    const FromGltfOptions options;
    gltf::AccessorReader accessors;
    gltf::KeyTrackReader keys;
    Budget budget;
    bool reports_shared = true;      // false once a scene was made: long lists are not walked in vain
    ConversionReport* report;        // of what all scenes share: at present
    ConversionReport* motion_report; // of what belongs to one animation: at present

    void Report(Code code, const gltf::Place& place, std::string text, std::size_t count = 1) const
    {
        report->Add(code, place.Text(), std::move(text), count);
    }

    void ReportMotion(Code code, const gltf::Place& place, std::string text, std::size_t count = 1) const
    {
        motion_report->Add(code, place.Text(), std::move(text), count);
    }

    /// Reports the extensions of an object that are none of `known`, and, where `loses_extras`, its extras.
    void ReportRest(gltf::JsonValue object, const gltf::Place& place,
                    std::initializer_list<std::string_view> known, bool loses_extras) const;

    /// A text as a file keeps it: one unit a byte. One that is too long is cut, and reported.
    TEV2_LOADER::TEV2_WIDE_STRING WideText(std::string_view utf8, const gltf::Place& place);

    /// The extras of an object as user properties; what has no place there is reported. `except` is no property.
    void ReadExtras(gltf::JsonValue owner, const gltf::Place& place,
                    TEV2_LOADER::TEV2_EXTENDED_PROPERTIES& properties, std::string_view except = {});

private:
    bool ReadExtra(gltf::JsonValue value, const TEV2_LOADER::TEV2_WIDE_STRING& name, const gltf::Place& place,
                   TEV2_LOADER::TEV2_EXTENDED_PROPERTIES& properties);
};

/// In single precision; throws gltf::Error for a number that is too large for it.
float Single(double number, const gltf::Place& place);

} // namespace tev2_gltf
