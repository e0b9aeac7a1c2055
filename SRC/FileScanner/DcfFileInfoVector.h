// The shared files of the scan mode that works from an incremental list, newest last, at most 1000.
//
// One instance in the process.  addToDCFInfoVector fills the lists from the platform; later calls
// add only what is new, so the instance is kept between scans and destroyed by the host.  Used from
// the scanner's thread; only CancelInvalidateAllItems may be called from another.
#pragma once

#include <atomic>
#include <string>
#include <vector>

#include "Platform/Export.h"

// The platform's codes for the kind of a shared file; any int from 0 to 9 may occur.
enum DLNA_FILE_TYPE : int {
  DLNA_FILE_TYPE_NONE = 0,         // none given, or not supported
  DLNA_FILE_TYPE_IMAGE = 1,        // still picture
  DLNA_FILE_TYPE_VIDEO = 2,        // film
  DLNA_FILE_TYPE_VIDEO_OTHER = 3,  // a kind of film that photo sharing refuses
  DLNA_FILE_TYPE_RAW = 4,          // raw picture (".KRZ")
  DLNA_FILE_TYPE_IMAGE_RAW = 5,    // picture with a raw companion
  DLNA_FILE_TYPE_MPO = 6,          // multi-picture file
  DLNA_FILE_TYPE_3D = 7,           // 3D photo
};

class ORX_API DcfFileInfoVector {
 public:
  static DcfFileInfoVector* GetInstance();  // created on first use
  static void DestroyInstance();            // harmless when there is none

  // Fills or extends the lists from the platform.  1 done, 0 failed or cancelled.
  int addToDCFInfoVector();
  void CancelInvalidateAllItems();  // from any thread; stays set until the instance is destroyed
  // Whether an entry is shared in the current mode, and its type.  1 supported, 0 not.
  int supportFileCheck(const char* extension, const char* uri, DLNA_FILE_TYPE* type);
  DLNA_FILE_TYPE convertFileType(int platformType);
  int isInDirFileNumVector(int number);  // 1 found, 0 not

  int getDirNumVectorSize() const;
  int getDirFileNumVectorSize() const;
  int getFileTypeVectorSize() const;
  int getDcfIndexVectorSize() const;
  int getDirNameVectorSize() const;
  int getFilePathVectorSize() const;
  // -1 for an index outside the list.
  int getDirNumVectorAt(int index) const;
  int getDirFileNumVectorAt(int index) const;
  int getFileTypeVectorAt(int index) const;
  int getDcfIndexVectorAt(int index) const;
  // Throw std::out_of_range for an index outside the list.
  std::string& getDirNameVectorAt(int index);
  std::string& getFilePathVectorAt(int index);

  static DcfFileInfoVector* mpDcfFileInfoVectorInstance;

  bool bListExisted = false;        // the list existed before the last call
  unsigned int nNewFilesAdded = 0;  // by the last call
  std::atomic<bool> bCancelFlag{false};
  int nTotalCnt = 0;                  // the platform's count when the list was last completed
  unsigned int nCumulativeAdded = 0;  // over all completed calls

 private:
  DcfFileInfoVector() = default;
  ~DcfFileInfoVector() = default;

  bool ReadFiles(int start, int total);
  bool AddFile(int index, const char* uri);
  void DropOldestFiles();

  std::string currentDirName_;
  std::vector<int> vDirNum;
  std::vector<int> vDirFileNum;
  std::vector<DLNA_FILE_TYPE> vFileType;
  std::vector<int> vDcfIndex;
  std::vector<std::string> vDirName;
  std::vector<std::string> vFilePath;
};
