#pragma once

#include "exporter/sampling/sampling_range.h"
#include "tev2_loader/records/extended_properties.h"

#include <fbsdk/fbsdk.h>

#include <vector>

namespace tev2_exporter
{

// The user properties of one model, in the order of its property list. The SDK owns them.
using UserPropertySet = std::vector<FBProperty*>;

UserPropertySet CollectUserProperties(FBModel& model);

// Makes one entry of `block` for each property, in set order, in place of what the block held:
//
//     integer, boolean (0 or 1)   integer track          3-vector, RGB colour   3-vector track
//     double                      float track            RGBA colour            4-vector track
//     text                        the text               enumeration            the names of all its items
//
// Properties of other types are left out. Each track gets its key at the start of `range`. With
// `keep_positive_z` that one key of a 3-vector (not of a colour) is turned to (-x, y, -z); later keys are
// not.
void BuildExtendedProperties(TEV2_LOADER::TEV2_EXTENDED_PROPERTIES& block, const UserPropertySet& properties,
                             const SamplingRange& range, bool keep_positive_z);

// Appends one key at `time` (seconds) to every track that BuildExtendedProperties made of the same set.
// Allocates nothing but what the tracks need to grow.
void SampleUserProperties(TEV2_LOADER::TEV2_EXTENDED_PROPERTIES& block, const UserPropertySet& properties,
                          float time);

} // namespace tev2_exporter
