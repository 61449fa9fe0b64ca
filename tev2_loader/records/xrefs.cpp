#include "tev2_loader/records/xrefs.h"

#include "tev2_loader/records/archives.h"

namespace TEV2_LOADER
{

template struct TEV2_RECORD_CODE<TEV2_XREF<kXref15Chunk>>;
template struct TEV2_RECORD_CODE<TEV2_XREF<kXref20Chunk>>;
template struct TEV2_RECORD_CODE<TEV2_XREF_OBJECT>;
template struct TEV2_RECORD_CODE<TEV2_XREF_SPEEDTREE>;

} // namespace TEV2_LOADER
