// pictures.h -- the four images of the report, drawn as pixels.
#ifndef VEMCOV_TOOLS_PICTURES_H
#define VEMCOV_TOOLS_PICTURES_H

#include "gif_writer.h"

namespace gifmake {

// Each picture with its palette; the size knobs are set by the caller.
GifPicture HomePicture();    // a house, 19 x 20, 256-entry table
GifPicture HelpPicture();    // a question mark on a blue disc, 19 x 20
GifPicture LogoPicture();    // the "Tarsk" wordmark over an orange swoosh, 66 x 45
GifPicture SpacerPicture();  // one transparent pixel

}  // namespace gifmake

#endif
