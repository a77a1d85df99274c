// ImageRep: the base of every image representation.
#include "image/ImageRep.h"

namespace orvel {

ImageRep::~ImageRep() = default;

} // namespace orvel
