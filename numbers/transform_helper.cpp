#include "numbers/transform_helper.hpp"

#include "foundation/exceptions.hpp"

namespace znp {

TransformHelper::TransformHelper(const BasicParameters& bp, const transform& algorithm_)
    : WorkAreas(algorithm_.work_areas(bp.M)), algorithm(algorithm_) {
    if (algorithm.product_bytes() > bp.ML) {
        fire(BufferTooSmallException("TransformHelper::TransformHelper()", bp.ML, algorithm.product_bytes()));
    }
}

}  // namespace znp
