#include "FileScanner/ImageMetaData.h"

ImageMetaData::~ImageMetaData() = default;
