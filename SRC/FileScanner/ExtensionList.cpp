#include "FileScanner/ExtensionList.h"

#include "FileScanner/DirectoryScanner.h"
#include "OSAL/ORXAString.h"
#include "OSAL/StringUtiltiy.h"

const char* All_Supported_Extensions =
    "m4a, adts, m4b, mp4, 3gp, aac, ac3, m4v, mov, jpg, jpeg, mp3, avi, wmv, wma, wav, mpeg, mpg, "
    "mpo, krz";
const char* MP4_Extension = "mp4, avi";
const char* PC_JPEG_Extension = "jpg, jpeg,mpo, krz";
const char* MRCP_JPEG_Extension = "jpg, jpeg,mpo";
const char* JPEG_Extension = "jpg, jpeg";

namespace orx {

std::string LowerCaseExtension(const char* extension) {
  std::string lower = extension == nullptr ? "" : extension;
  StringUtiltiy::LowerCase(lower.data());
  return lower;
}

bool ListHasExtension(const char* list, const char* extension) {
  return list != nullptr && extension != nullptr &&
         ORXAString::LocateiStr(list, extension) != nullptr;
}

bool BelongsToAnotherParser(const char* own, const char* extension) {
  return !ListHasExtension(own, extension) && ListHasExtension(All_Supported_Extensions, extension);
}

}  // namespace orx
