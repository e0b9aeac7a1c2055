// The resource names of a picture's thumbnail and screennail and of a film's thumbnail.
//
// Each function draws one name and keeps it in the record, which is the one value that the writers
// of the database change in a record that is constant to them.  A record of another kind has no
// place for the name and stays as it is.
#pragma once

#include "FileScanner/MediaMetaData.h"

namespace orx {

enum class NamedAfter { kExtension, kExtensionAndSortIndex };

void NameImageThumbnail(const MediaMetaData& record, NamedAfter parts);
void NameImageScreennail(const MediaMetaData& record, NamedAfter parts);
void NameVideoThumbnail(const MediaMetaData& record);  // a JPEG, named after the sort index

}  // namespace orx
