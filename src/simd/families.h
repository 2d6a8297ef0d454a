// The families' forms of the kernels and their tables. Only the files of this folder include it.
//
// The files avx2*.cpp and avx512*.cpp are compiled for processors that may not be there. So they hold nothing that the
// linker could hand out to others: what they define apart from the forms named here stays in an unnamed namespace, and
// they call no inline function or template of another header, not even one of the standard library.
#pragma once

#include "simd/kernels.h"

namespace kxstr::simd {

namespace plain {
extern const Kernels kKernels;
Size8 size8;
Size16 size16;
FindZero16 find_zero16;
Find8 find8;
Find16 find16;
Find16 find_last16;
FindWithin16 find_within16;
FindSigns16 find_signs16;
FindShort16 find_short16;
Outside8 outside8;
Outside16 outside16;
Mismatch8 mismatch8;
Mismatch16 mismatch16;
Mismatch16 mismatch16_caseless;
Compare8 compare8;
Compare8 compare8_caseless;
Compare16 compare16;
OrderByValues16 order_by_values16;
OrderByBlock16 order_by_block16;
OrderByBlock16 order_by_block16_caseless;
Copy16 copy16;
MapBytes map_bytes;
MapUnits map_units;
EncodeUnits encode_units;
DecodePairs decode_pairs;
DecodePairs decode_page;
DecodeShort decode_short;
StreamOfShort stream_of_short;
SkipCharacters skip_characters;
FilterStream filter_stream;
NarrowStream narrow_stream;
WriteStream write_stream;
StreamOfBytes stream_of_bytes;
ChangeCase16 change_case16;
MapCase16 map_case16;
MismatchByCase16 mismatch_by_case16;
Translate8 translate8;
Translate16 translate16;
Utf8OfUnits utf8_of_units;
UnitsOfUtf8 units_of_utf8;
Utf8OfUnits bytes_of_codes;
Utf8OfBytes utf8_of_bytes;
BytesOfUtf8 bytes_of_utf8;
BytesOfMapped bytes_of_mapped;
} // namespace plain

namespace avx2 {
extern const Kernels kKernels;
Size8 size8;
Size16 size16;
FindZero16 find_zero16;
Find8 find8;
Find16 find16;
Find16 find_last16;
FindWithin16 find_within16;
FindSigns16 find_signs16;
FindShort16 find_short16;
Outside8 outside8;
Outside16 outside16;
Mismatch8 mismatch8;
Mismatch16 mismatch16;
Mismatch16 mismatch16_caseless;
Compare8 compare8;
Compare8 compare8_caseless;
Compare16 compare16;
OrderByValues16 order_by_values16;
OrderByBlock16 order_by_block16;
OrderByBlock16 order_by_block16_caseless;
Copy16 copy16;
SkipCharacters skip_characters;
FilterStream filter_stream;
NarrowStream narrow_stream;
WriteStream write_stream;
StreamOfBytes stream_of_bytes;
MapBytes map_bytes;
MapUnits map_units;
EncodeUnits encode_units;
DecodePairs decode_pairs;
DecodePairs decode_page;
ChangeCase16 change_case16;
MapCase16 map_case16;
MismatchByCase16 mismatch_by_case16;
Utf8OfUnits utf8_of_units;
UnitsOfUtf8 units_of_utf8;
Utf8OfUnits bytes_of_codes;
Utf8OfBytes utf8_of_bytes;
BytesOfUtf8 bytes_of_utf8;
BytesOfMapped bytes_of_mapped;
} // namespace avx2

namespace avx512 {
extern const Kernels kKernels;
Size8 size8;
Size16 size16;
FindZero16 find_zero16;
Find8 find8;
Find16 find16;
Find16 find_last16;
FindWithin16 find_within16;
FindSigns16 find_signs16;
FindShort16 find_short16;
Outside8 outside8;
Outside16 outside16;
Mismatch8 mismatch8;
Mismatch16 mismatch16;
Mismatch16 mismatch16_caseless;
Compare8 compare8;
Compare8 compare8_caseless;
Compare16 compare16;
OrderByValues16 order_by_values16;
Copy16 copy16;
MapBytes map_bytes;
MapUnits map_units;
EncodeUnits encode_units;
DecodePairs decode_pairs;
DecodePairs decode_page;
DecodeShort decode_short;
StreamOfShort stream_of_short;
SkipCharacters skip_characters;
FilterStream filter_stream;
NarrowStream narrow_stream;
WriteStream write_stream;
StreamOfBytes stream_of_bytes;
ChangeCase16 change_case16;
MapCase16 map_case16;
MismatchByCase16 mismatch_by_case16;
Translate8 translate8;
Translate16 translate16;
Utf8OfUnits utf8_of_units;
UnitsOfUtf8 units_of_utf8;
Utf8OfUnits bytes_of_codes;
Utf8OfBytes utf8_of_bytes;
BytesOfUtf8 bytes_of_utf8;
BytesOfMapped bytes_of_mapped;
} // namespace avx512

} // namespace kxstr::simd
