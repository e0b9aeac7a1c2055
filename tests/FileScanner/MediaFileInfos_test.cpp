#include "FileScanner/MediaFileInfos.h"

#include <gtest/gtest.h>

namespace {

TEST(MediaFileInfos, IsOneInstanceUntilItIsDestroyed) {
  MediaFileInfos::DestroyInstance();
  EXPECT_EQ(MediaFileInfos::mpThisInstance, nullptr);
  MediaFileInfos* infos = MediaFileInfos::GetInstance();
  EXPECT_EQ(MediaFileInfos::GetInstance(), infos);
  EXPECT_EQ(MediaFileInfos::mpThisInstance, infos);
  infos->setTitle("gone");
  MediaFileInfos::DestroyInstance();
  EXPECT_EQ(MediaFileInfos::mpThisInstance, nullptr);
  MediaFileInfos::DestroyInstance();
  EXPECT_EQ(MediaFileInfos::GetInstance()->getTitle(), nullptr);
  MediaFileInfos::DestroyInstance();
}

TEST(MediaFileInfos, StartsEmpty) {
  MediaFileInfos::DestroyInstance();
  MediaFileInfos* infos = MediaFileInfos::GetInstance();
  for (const char* text :
       {infos->getFilePath(), infos->getTitle(), infos->getDate(), infos->getMimeType(),
        infos->getDlnaProfile(), infos->getBitRate(), infos->getResolution(), infos->getFileSize()})
    EXPECT_EQ(text, nullptr);
  EXPECT_EQ(infos->getObjectType(), 0);
  EXPECT_EQ(infos->getDuration(), 0u);
  MediaFileInfos::DestroyInstance();
}

TEST(MediaFileInfos, KeepsEveryFieldAndIgnoresNull) {
  MediaFileInfos::DestroyInstance();
  MediaFileInfos* infos = MediaFileInfos::GetInstance();
  for (const char* text : {"value", static_cast<const char*>(nullptr)}) {
    infos->setFilePath(text);
    infos->setTitle(text);
    infos->setDate(text);
    infos->setMimeType(text);
    infos->setDlnaProfile(text);
    infos->setBitRate(text);
    infos->setResolution(text);
    infos->setFileSize(text);
  }
  infos->setObjectType(3);
  infos->setDuration(4000000000u);
  for (const char* text :
       {infos->getFilePath(), infos->getTitle(), infos->getDate(), infos->getMimeType(),
        infos->getDlnaProfile(), infos->getBitRate(), infos->getResolution(), infos->getFileSize()})
    EXPECT_STREQ(text, "value");
  EXPECT_EQ(infos->getObjectType(), 3);
  EXPECT_EQ(infos->getDuration(), 4000000000u);
  MediaFileInfos::DestroyInstance();
}

}  // namespace
