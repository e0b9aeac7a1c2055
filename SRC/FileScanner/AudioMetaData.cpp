#include "FileScanner/AudioMetaData.h"

AudioMetaData::~AudioMetaData() = default;
