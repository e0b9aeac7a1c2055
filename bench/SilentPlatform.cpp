// A platform that logs nothing, shares nothing and knows nothing of the files, so that the library
// is measured alone.
#include "Platform/CameraPlatform.h"

int __dlog_print(int, int, const char*, const char*, ...) { return 0; }
int GetTandemixMode(void) { return 0; }
int QUILWifi_getFileCount(void) { return 0; }
int QUILWifi_getURIFromIndex(int, char*&) { return -1; }
int QUILWifi_getFileType(char*) { return 0; }
int QUILWifi_getFileAttribute(char*, sFileAttribute*) { return 0; }
int QUILWifi_getVideoAttribute(char*, sVideoAttribute*) { return 0; }
int QUILWifi_getJpegScreennailInfo(char*, int*, int*, int*, int*) { return 0; }
long long ORXGetFileSize(const char*) { return 0; }
int ORXGetDlnaCertificationState(void) { return 0; }
