// The work buffer of a product, carved for one transform: two images and the transform's scratch.
//
// All memory is bp's buffer: one below 2 transform_bytes + work_bytes throws BufferTooSmallException at
// "TransformHelper::TransformHelper()". Products that share transformed operands: numbers/product_chain.hpp.
#pragma once

#include "multiply/basic_parameters.hpp"
#include "multiply/transform.hpp"

namespace znp {

struct TransformHelper : WorkAreas {
    TransformHelper(const BasicParameters& bp, const transform& algorithm);

    const transform& algorithm;
};

}  // namespace znp
