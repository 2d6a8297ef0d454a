#include "simd/families.h"

namespace kxstr::simd::avx512 {

constinit const Kernels kKernels{
    .name = "avx512",
    .size16 = size16,
    .find16 = find16,
    .copy16 = copy16,
    .find_zero16 = find_zero16,
    .find_last16 = find_last16,
    .find_within16 = find_within16,
    .find_signs16 = find_signs16,
    .find_short16 = find_short16,
    .outside8 = outside8,
    .outside16 = outside16,
    .mismatch16 = mismatch16,
    .compare8 = compare8,
    .compare8_caseless = compare8_caseless,
    .compare16 = compare16,
    .order_by_values16 = order_by_values16,
    .skip_characters = skip_characters,
    .filter_stream = filter_stream,
    .narrow_stream = narrow_stream,
    .write_stream = write_stream,
    .map_bytes = map_bytes,
    .map_units = map_units,
    .encode_units = encode_units,
    .decode_pairs = decode_pairs,
    .decode_page = decode_page,
    .decode_short = decode_short,
    .map_case16 = map_case16,
    .mismatch_by_case16 = mismatch_by_case16,
    .translate8 = translate8,
    .translate16 = translate16,
    .utf8_of_units = utf8_of_units,
    .units_of_utf8 = units_of_utf8,
    .bytes_of_codes = bytes_of_codes,
    .utf8_of_bytes = utf8_of_bytes,
    .bytes_of_utf8 = bytes_of_utf8,
    .bytes_of_mapped = bytes_of_mapped,
};

} // namespace kxstr::simd::avx512
