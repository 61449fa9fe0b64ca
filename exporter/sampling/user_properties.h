#pragma once

#include "exporter/sampling/sampled_track.h"
#include "tev2_loader/records/extended_properties.h"

#include <fbsdk/fbsdk.h>

#include <variant>
#include <vector>

namespace tev2_exporter
{

/// The user properties of one model, in the order of its property list. The SDK owns them.
using UserPropertySet = std::vector<FBProperty*>;

UserPropertySet CollectUserProperties(FBModel& model);

/// Replaces the contents of `block` with one entry for each property, in set order:
///
///     integer, boolean (0 or 1)   integer track          3-vector, RGB colour   3-vector track
///     double                      float track            RGBA colour            4-vector track
///     text                        the text               enumeration            the names of all its items
///
/// Properties of other types are left out. Each track gets its key at the start of `range`. With `keep_positive_z`
/// this first key of a 3-vector (not of a colour) becomes (-x, y, -z); later keys do not.
void BuildExtendedProperties(TEV2_LOADER::TEV2_EXTENDED_PROPERTIES& block, const UserPropertySet& properties,
                             const SamplingRange& range, bool keep_positive_z);

/// A property and the track that receives its values.
template <typename Family>
struct TrackBinding
{
    FBProperty* property;
    typename Family::Value (*read)(FBProperty&);
    SampledTrack<Family>* track;

    void Sample(float time) const { track->Append(time, read(*property)); }
};

using PropertyBinding = std::variant<
    TrackBinding<TEV2_LOADER::TEV2_ANIMATABLE_INT32>, TrackBinding<TEV2_LOADER::TEV2_ANIMATABLE_FLOAT32>,
    TrackBinding<TEV2_LOADER::TEV2_ANIMATABLE_VECTOR_3>, TrackBinding<TEV2_LOADER::TEV2_ANIMATABLE_VECTOR_4>>;

/// Binds each property to its track in `block`, which BuildExtendedProperties filled: the n-th integer property to the
/// n-th integer entry and so on. Properties beyond the entries of their kind are left out. Appends to `bindings`, which
/// are valid as long as the tracks exist.
void BindProperties(TEV2_LOADER::TEV2_EXTENDED_PROPERTIES& block, const UserPropertySet& properties,
                    std::vector<PropertyBinding>& bindings);

/// Appends one key at `time` (seconds) to every bound track.
void SampleProperties(const std::vector<PropertyBinding>& bindings, float time);

} // namespace tev2_exporter
