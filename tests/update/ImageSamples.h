#pragma once

#include "support/FirmwareImages.h"

/// An image of version 258.3.255: a number in each part that the others could not hold or would not have.
inline FirmwareImages::Image someImage(FirmwareImages::Role role)
{
    FirmwareImages::Image image;
    image.role = role;
    image.major = 0x0102;
    image.minor = 3;
    image.patch = 255;
    return image;
}
