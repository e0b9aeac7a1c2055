#include "MediaReaders/dlna_profiles.h"

#include <iterator>

namespace {

// ---- the keys of the tables ----

// Classes of pictures: MPEG-4 Part 2 (Simple, Advanced Simple, Core) and H.263, then AVC.
enum VideoId {
  kAvc3gppQcif15 = 0,  // also what a film without class has
  k3gppSpL0b = 1,
  kSpL2 = 2,
  kSp = 3,
  kSpVga = 4,
  kAsp = 5,
  kAspL5So = 6,
  kAspL4So = 7,
  kH263L10 = 8,  // profiles 0 and 3
  kCore = 10,
  kAvcMainHd = 11,
  kAvcMainSd = 12,
  kAvcBaseL3lSd = 13,
  kAvcBaseL3Sd = 14,
  kAvcBaseCif30 = 15,
  kAvcBaseL2Cif30 = 16,
  kAvcBaseCif15 = 17,
  kAvcBaseL12Cif15 = 18,
  kAvcBaseL1bQcif15 = 19,
};

enum Container {
  kMp4 = 1,
  kTs = 2,
  kTsStamped = 3,  // each packet with a time stamp: names that end in "_T"
  kTsIso = 4,      // plain packets: names that end in "_ISO"
  kAsf = 5,
  k3gpp = 6,
};

enum AudioCode {
  kAac = 1,
  kAacMulti5 = 2,
  kHeAac = 3,
  kHeAacMulti5 = 4,
  kAtrac3Plus = 5,
  kAacLtpP2 = 6,  // beside MPEG-4 Part 2 and H.263 pictures
  kMpeg1L3 = 7,
  kMpeg2L2 = 8,
  kAc3 = 9,
  kG726 = 10,
  kAmr = 11,
  kAmrWbPlus = 12,
  kHeAacL2 = 14,
  kAacLtp = 15,  // beside AVC pictures
  kAacLtpMulti5 = 16,
  kAacLtpMulti7 = 17,
  kBsac = 18,
  kBsacMulti5 = 19,
  kAacInAdts = 20,  // codes of sound files, in no row of the video table
  kHeAacInAdts = 21,
};

// Rows of the audio table.
enum AudioProfileId {
  kAacIso = 1,
  kAacIso320 = 2,
  kAacAdts = 3,
  kAacAdts320 = 4,
  kAacMulti5Iso = 5,
  kAacMulti5Adts = 6,
  kHeAacL2Iso = 7,
  kHeAacL2Iso320 = 8,
  kHeAacL2Adts = 9,
  kHeAacL2Adts320 = 10,
  kHeAacL3Iso = 11,
  kHeAacL3Adts = 12,
  kHeAacMulti5Iso = 13,
  kHeAacMulti5Adts = 14,
  kAacLtpIso = 15,
  kAacLtpMulti5Iso = 16,
  kAacLtpMulti7Iso = 17,
  kBsacIso = 18,
  kBsacMulti5Iso = 19,
};

// ---- the tables ----

// The first row that fits is taken, so the order counts.  The names are those that servers and
// renderers exchange, odd spellings ("HEACC", "ACC", "MULT57") included.
constexpr orx::VideoProfile kVideoProfiles[] = {
    {k3gppSpL0b, k3gpp, kAac, "MPEG4_P2_3GPP_SP_L0B_AAC"},
    {k3gppSpL0b, k3gpp, kAmr, "MPEG4_P2_3GPP_SP_L0B_AMR"},
    {kSpL2, kMp4, kAac, "MPEG4_P2_MP4_SP_L2_AAC"},
    {kSpL2, kMp4, kAmr, "MPEG4_P2_MP4_SP_L2_AMR"},
    {kSp, kMp4, kAac, "MPEG4_P2_MP4_SP_AAC"},
    {kSp, kMp4, kHeAac, "MPEG4_P2_MP4_SP_HEAAC"},
    {kSp, kMp4, kAtrac3Plus, "MPEG4_P2_MP4_SP_ATRAC3plus"},
    {kSp, kMp4, kAacLtpP2, "MPEG4_P2_MP4_SP_AAC_LTP"},
    {kSp, kTs, kAac, "MPEG4_P2_TS_SP_AAC"},
    {kSp, kTsStamped, kAac, "MPEG4_P2_TS_SP_AAC_T"},
    {kSp, kTsIso, kAac, "MPEG4_P2_TS_SP_AAC_ISO"},
    {kSp, kTs, kMpeg1L3, "MPEG4_P2_TS_SP_MPEG1_L3"},
    {kSp, kTsStamped, kMpeg1L3, "MPEG4_P2_TS_SP_MPEG1_L3_T"},
    {kSp, kTsIso, kMpeg1L3, "MPEG4_P2_TS_SP_MPEG1_L3_ISO"},
    {kSp, kTs, kMpeg2L2, "MPEG4_P2_TS_SP_MPEG2_L2"},
    {kSp, kTsStamped, kMpeg2L2, "MPEG4_P2_TS_SP_MPEG2_L2_T"},
    {kSp, kTsIso, kMpeg2L2, "MPEG4_P2_TS_SP_MPEG2_L2_ISO"},
    {kSp, kTs, kAc3, "MPEG4_P2_TS_SP_AC3"},
    {kSp, kTsStamped, kAc3, "MPEG4_P2_TS_SP_AC3_T"},
    {kSp, kTsIso, kAc3, "MPEG4_P2_TS_SP_AC3_ISO"},
    {kSp, kAsf, kG726, "MPEG4_P2_ASF_SP_G726"},
    {kSpVga, kMp4, kAac, "MPEG4_P2_MP4_SP_VGA_AAC"},
    {kSpVga, kMp4, kHeAac, "MPEG4_P2_MP4_SP_VGA_HEAAC"},
    {kAsp, kMp4, kAac, "MPEG4_P2_MP4_ASP_AAC"},
    {kAsp, kMp4, kHeAac, "MPEG4_P2_MP4_ASP_HEAAC"},
    {kAsp, kMp4, kHeAacMulti5, "MPEG4_P2_MP4_ASP_HEAAC_MULT5"},
    {kAsp, kMp4, kAtrac3Plus, "MPEG4_P2_MP4_ASP_ATRAC3plus"},
    {kAsp, kTs, kAac, "MPEG4_P2_TS_ASP_AAC"},
    {kAsp, kTsStamped, kAac, "MPEG4_P2_TS_ASP_AAC_T"},
    {kAsp, kTsIso, kAac, "MPEG4_P2_TS_ASP_AAC_ISO"},
    {kAsp, kTs, kMpeg1L3, "MPEG4_P2_TS_ASP_MPEG1_L3"},
    {kAsp, kTsStamped, kMpeg1L3, "MPEG4_P2_TS_ASP_MPEG1_L3_T"},
    {kAsp, kTsIso, kMpeg1L3, "MPEG4_P2_TS_ASP_MPEG1_L3_ISO"},
    {kAsp, kTs, kAc3, "MPEG4_P2_TS_ASP_AC3"},
    {kAsp, kTsStamped, kAc3, "MPEG4_P2_TS_ASP_AC3_T"},
    {kAsp, kTsIso, kAc3, "MPEG4_P2_TS_ASP_AC3_ISO"},
    {kAspL5So, kMp4, kAac, "MPEG4_P2_MP4_ASP_L5_SO_AAC"},
    {kAspL5So, kMp4, kHeAac, "MPEG4_P2_MP4_ASP_L5_SO_HEAAC"},
    {kAspL5So, kMp4, kHeAacMulti5, "MPEG4_P2_MP4_ASP_L5_SO_HEAAC_MULT5"},
    {kAspL5So, kAsf, kG726, "MPEG4_P2_ASF_ASP_L5_SO_G726"},
    {kAspL4So, kMp4, kAac, "MPEG4_P2_MP4_ASP_L4_SO_AAC"},
    {kAspL4So, kMp4, kHeAac, "MPEG4_P2_MP4_ASP_L4_SO_HEAAC"},
    {kAspL4So, kMp4, kHeAacMulti5, "MPEG4_P2_MP4_ASP_L4_SO_HEAAC_MULT5"},
    {kAspL4So, kAsf, kG726, "MPEG4_P2_ASF_ASP_L4_SO_G726"},
    {kH263L10, kMp4, kAac, "MPEG4_H263_MP4_P0_L10_AAC"},
    {kH263L10, kMp4, kAacLtpP2, "MPEG4_H263_MP4_P0_L10_AAC_LTP"},
    {kH263L10, k3gpp, kAmrWbPlus, "MPEG4_H263_3GPP_P0_L10_AMR_WBplus"},
    {kH263L10, k3gpp, kAmr, "MPEG4_H263_3GPP_P3_L10_AMR"},
    {kCore, kTs, kAc3, "MPEG4_P2_TS_CO_AC3"},
    {kCore, kTsStamped, kAc3, "MPEG4_P2_TS_CO_AC3_T"},
    {kCore, kTsIso, kAc3, "MPEG4_P2_TS_CO_AC3_ISO"},
    {kCore, kTs, kMpeg2L2, "MPEG4_P2_TS_CO_MPEG2_L2"},
    {kCore, kTsStamped, kMpeg2L2, "MPEG4_P2_TS_CO_MPEG2_L2_T"},
    {kCore, kTsIso, kMpeg2L2, "MPEG4_P2_TS_CO_MPEG2_L2_ISO"},
    {kAvcMainHd, kTs, kAacMulti5, "AVC_TS_MP_HD_AAC_MULT5"},
    {kAvcMainHd, kTsStamped, kAacMulti5, "AVC_TS_MP_HD_AAC_MULT5_T"},
    {kAvcMainHd, kTsIso, kAacMulti5, "AVC_TS_MP_HD_AAC_MULT5_ISO"},
    {kAvcMainHd, kTs, kHeAacL2, "AVC_TS_MP_HD_HEAAC_L2"},
    {kAvcMainHd, kTsStamped, kHeAacL2, "AVC_TS_MP_HD_HEAAC_L2_T"},
    {kAvcMainHd, kTsIso, kHeAacL2, "AVC_TS_MP_HD_HEAAC_L2_ISO"},
    {kAvcMainHd, kTs, kMpeg1L3, "AVC_TS_MP_HD_MPEG1_L3"},
    {kAvcMainHd, kTsStamped, kMpeg1L3, "AVC_TS_MP_HD_MPEG_L3_T"},
    {kAvcMainHd, kTsIso, kMpeg1L3, "AVC_TS_MP_HD_MPEG_L3_ISO"},
    {kAvcMainHd, kTs, kAc3, "AVC_TS_MP_HD_AC3"},
    {kAvcMainHd, kTsStamped, kAc3, "AVC_TS_MP_HD_AC3_T"},
    {kAvcMainHd, kTsIso, kAc3, "AVC_TS_MP_HD_AC3_ISO"},
    {kAvcMainHd, kTs, kAacLtp, "AVC_TS_MP_HD_AAC_LTP"},
    {kAvcMainHd, kTsStamped, kAacLtp, "AVC_TS_MP_HD_AAC_LTP_T"},
    {kAvcMainHd, kTsIso, kAacLtp, "AVC_TS_MP_HD_AAC_LTP_ISO"},
    {kAvcMainHd, kTs, kAacLtpMulti5, "AVC_TS_MP_HD_AAC_LTP_MULT5"},
    {kAvcMainHd, kTsStamped, kAacLtpMulti5, "AVC_TS_MP_HD_AAC_LTP_MULT5_T"},
    {kAvcMainHd, kTsIso, kAacLtpMulti5, "AVC_TS_MP_HD_AAC_LTP_MULT5_ISO"},
    {kAvcMainHd, kTs, kAacLtpMulti7, "AVC_TS_MP_HD_AAC_LTP_MULT7"},
    {kAvcMainHd, kTsStamped, kAacLtpMulti7, "AVC_TS_MP_HD_AAC_LTP_MULT7_T"},
    {kAvcMainHd, kTsIso, kAacLtpMulti7, "AVC_TS_MP_HD_AAC_LTP_MULT7_ISO"},
    {kAvcMainSd, kTs, kAacLtpMulti5, "AVC_TS_MP_SD_AAC_LTP_MULT5"},
    {kAvcMainSd, kTsStamped, kAacLtpMulti5, "AVC_TS_MP_SD_AAC_LTP_MULT5_T"},
    {kAvcMainSd, kTsIso, kAacLtpMulti5, "AVC_TS_MP_SD_AAC_LTP_MULT5_ISO"},
    {kAvcMainSd, kTs, kHeAacMulti5, "AVC_TS_MP_SD_HEAAC_L2_MULT5"},
    {kAvcMainSd, kTsStamped, kHeAacMulti5, "AVC_TS_MP_SD_HEAAC_L2_MULT5_T"},
    {kAvcMainSd, kTsIso, kHeAacMulti5, "AVC_TS_MP_SD_HEAAC_L2_MULT5_ISO"},
    {kAvcMainSd, kTs, kBsac, "AVC_TS_MP_SD_HEAAC_L2_BSAC"},
    {kAvcMainSd, kTsStamped, kBsac, "AVC_TS_MP_SD_HEAAC_L2_BSAC_T"},
    {kAvcMainSd, kTsIso, kBsac, "AVC_TS_MP_SD_HEAAC_L2_BSAC_ISO"},
    {kAvcMainSd, kMp4, kBsac, "AVC_MP4_MP_SD_BSAC"},
    {kAvcMainSd, kTs, kMpeg1L3, "AVC_TS_MP_SD_MPEG1_L3"},
    {kAvcMainSd, kTsStamped, kMpeg1L3, "AVC_TS_MP_SD_MPEG1_L3_T"},
    {kAvcMainSd, kTsIso, kMpeg1L3, "AVC_TS_MP_SD_MPEG1_L3_ISO"},
    {kAvcMainSd, kTs, kAc3, "AVC_TS_MP_SD_AC3"},
    {kAvcMainSd, kTsStamped, kAc3, "AVC_TS_MP_SD_AC3_T"},
    {kAvcMainSd, kTsIso, kAc3, "AVC_TS_MP_SD_AC3_ISO"},
    {kAvcMainSd, kTs, kAacLtp, "AVC_TS_MP_SD_AAC_LTP"},
    {kAvcMainSd, kTsStamped, kAacLtp, "AVC_TS_MP_SD_AAC_LTP_T"},
    {kAvcMainSd, kTsIso, kAacLtp, "AVC_TS_MP_SD_AAC_LTP_ISO"},
    {kAvcMainSd, kTs, kAacLtpMulti5, "AVC_TS_MP_SD_AAC_LTP_MULT5"},
    {kAvcMainSd, kTsStamped, kAacLtpMulti5, "AVC_TS_MP_SD_AAC_LTP_MULT5_T"},
    {kAvcMainSd, kTsIso, kAacLtpMulti5, "AVC_TS_MP_SD_AAC_LTP_MULT5_ISO"},
    {kAvcMainSd, kTs, kAacLtpMulti7, "AVC_TS_MP_SD_AAC_LTP_MULT57"},
    {kAvcMainSd, kTsStamped, kAacLtpMulti7, "AVC_TS_MP_SD_AAC_LTP_MULT7_T"},
    {kAvcMainSd, kTsIso, kAacLtpMulti7, "AVC_TS_MP_SD_AAC_LTP_MULT7_ISO"},
    {kAvcMainSd, kMp4, kAacMulti5, "AVC_MP4_MP_SD_AAC_MULT5"},
    {kAvcMainSd, kMp4, kHeAacL2, "AVC_MP4_MP_SD_HEACC_L2"},
    {kAvcMainSd, kMp4, kMpeg1L3, "AVC_MP4_MP_SD_MPEG1_L3"},
    {kAvcMainSd, kMp4, kAc3, "AVC_MP4_MP_SD_AC3"},
    {kAvcMainSd, kMp4, kAacLtp, "AVC_MP4_MP_SD_AAC_LTP"},
    {kAvcMainSd, kMp4, kAacLtpMulti5, "AVC_MP4_MP_SD_AAC_LTP_MULT5"},
    {kAvcMainSd, kMp4, kAacLtpMulti7, "AVC_MP4_MP_SD_AAC_LTP_MULT7"},
    {kAvcMainSd, kMp4, kAtrac3Plus, "AVC_MP4_MP_SD_ATRAC3plus"},
    {kAvcBaseL3Sd, kMp4, kAac, "AVC_MP4_BL_L3_SD_ACC"},
    {kAvcBaseL3lSd, kMp4, kAac, "AVC_MP4_BL_L3L_SD_AAC"},
    {kAvcBaseL3lSd, kMp4, kHeAac, "AVC_MP4_BL_L3L_SD_HEAAC"},
    {kAvcBaseL2Cif30, kMp4, kAac, "AVC_MP4_BL_L2_CIF30_AAC"},
    {kAvcBaseCif30, kTs, kAacMulti5, "AVC_TS_BL_CIF30_AAC_MULT5"},
    {kAvcBaseCif30, kTsStamped, kAacMulti5, "AVC_TS_BL_CIF30_AAC_MULT5_T"},
    {kAvcBaseCif30, kTsIso, kAacMulti5, "AVC_TS_BL_CIF30_AAC_MULT5_ISO"},
    {kAvcBaseCif30, kTs, kHeAacL2, "AVC_TS_BL_CIF30_HEACC_L2"},
    {kAvcBaseCif30, kTsStamped, kHeAacL2, "AVC_TS_BL_CIF30_HEACC_L2_T"},
    {kAvcBaseCif30, kTsIso, kHeAacL2, "AVC_TS_BL_CIF30_HEACC_L2_ISO"},
    {kAvcBaseCif30, kTs, kMpeg1L3, "AVC_TS_BL_CIF30_MPEG1_L3"},
    {kAvcBaseCif30, kTsStamped, kMpeg1L3, "AVC_TS_BL_CIF30_MPEG1_L3_T"},
    {kAvcBaseCif30, kTsIso, kMpeg1L3, "AVC_TS_BL_CIF30_MPEG1_L3_ISO"},
    {kAvcBaseCif30, kTs, kAc3, "AVC_TS_BL_CIF30_AC3"},
    {kAvcBaseCif30, kTsStamped, kAc3, "AVC_TS_BL_CIF30_AC3_T"},
    {kAvcBaseCif30, kTsIso, kAc3, "AVC_TS_BL_CIF30_AC3_ISO"},
    {kAvcBaseCif30, kTs, kAac, "AVC_TS_BL_CIF30_AAC_940"},
    {kAvcBaseCif30, kTsStamped, kAac, "AVC_TS_BL_CIF30_AAC_940_T"},
    {kAvcBaseCif30, kTsIso, kAac, "AVC_TS_BL_CIF30_AAC_940_ISO"},
    {kAvcBaseCif30, kTs, kAacLtp, "AVC_TS_BL_CIF30_AAC_LTP"},
    {kAvcBaseCif30, kTsStamped, kAacLtp, "AVC_TS_BL_CIF30_AAC_LTP_T"},
    {kAvcBaseCif30, kTsIso, kAacLtp, "AVC_TS_BL_CIF30_AAC_LTP_ISO"},
    {kAvcBaseCif30, kTs, kAacLtpMulti5, "AVC_TS_BL_CIF30_AAC_LTP_MULT5"},
    {kAvcBaseCif30, kTsStamped, kAacLtpMulti5, "AVC_TS_BL_CIF30_AAC_LTP_MULT5_T"},
    {kAvcBaseCif30, kTsIso, kAacLtpMulti5, "AVC_TS_BL_CIF30_AAC_LTP_MULT5_ISO"},
    {kAvcBaseCif30, kMp4, kAac, "AVC_MP4_BL_L2_CIF30_AAC"},
    {kAvcBaseCif30, kMp4, kAacMulti5, "AVC_MP4_BL_CIF30_AAC_MULT5"},
    {kAvcBaseCif30, kMp4, kHeAacL2, "AVC_MP4_BL_CIF30_HEACC_L2"},
    {kAvcBaseCif30, kMp4, kMpeg1L3, "AVC_MP4_BL_CIF30_MPEG1_L3"},
    {kAvcBaseCif30, kMp4, kAc3, "AVC_MP4_BL_CIF30_AC3"},
    {kAvcBaseCif30, kMp4, kHeAac, "AVC_MP4_BL_CIF30_HEACC_L2"},
    {kAvcBaseCif30, kMp4, kAacLtp, "AVC_MP4_BL_CIF30_AAC_LTP"},
    {kAvcBaseCif30, kMp4, kAacLtpMulti5, "AVC_MP4_BL_CIF30_AAC_LTP_MULT5"},
    {kAvcBaseCif30, kMp4, kBsac, "AVC_MP4_BL_CIF30_BSAC"},
    {kAvcBaseCif30, kMp4, kBsacMulti5, "AVC_MP4_BL_CIF30_BSAC_MULT5"},
    {kAvcBaseCif15, kTs, kAac, "AVC_TS_BL_CIF15_AAC"},
    {kAvcBaseCif15, kTsStamped, kAac, "AVC_TS_BL_CIF15_AAC_T"},
    {kAvcBaseCif15, kTsIso, kAac, "AVC_TS_BL_CIF15_AAC_ISO"},
    {kAvcBaseCif15, kTs, kAacLtp, "AVC_TS_BL_CIF15_AAC_LTP"},
    {kAvcBaseCif15, kTsStamped, kAacLtp, "AVC_TS_BL_CIF15_AAC_LTP_T"},
    {kAvcBaseCif15, kTsIso, kAacLtp, "AVC_TS_BL_CIF15_AAC_LTP_ISO"},
    {kAvcBaseCif15, kTs, kBsac, "AVC_TS_BL_CIF15_BSAC"},
    {kAvcBaseCif15, kTsStamped, kBsac, "AVC_TS_BL_CIF15_BSAC_T"},
    {kAvcBaseCif15, kTsIso, kBsac, "AVC_TS_BL_CIF15_BSAC_ISO"},
    {kAvcBaseCif15, kMp4, kAac, "AVC_MP4_BL_CIF15_AAC_520"},
    {kAvcBaseCif15, kMp4, kAac, "AVC_MP4_BL_CIF15_AAC"},
    {kAvcBaseCif15, kMp4, kAacLtp, "AVC_MP4_BL_CIF15_AAC_LTP_520"},
    {kAvcBaseCif15, kMp4, kAacLtp, "AVC_MP4_BL_CIF15_AAC_LTP"},
    {kAvcBaseCif15, kMp4, kHeAac, "AVC_MP4_BL_CIF15_HEAAC"},
    {kAvcBaseL12Cif15, kMp4, kHeAacL2, "AVC_MP4_BL_L12_CIF15_HEAAC"},
    {kAvcBaseCif15, kMp4, kBsac, "AVC_MP4_BL_CIF15_BSAC"},
    {kAvcBaseCif15, kMp4, kAmr, "AVC_MP4_BL_CIF15_AMR"},
    {kAvcBaseL12Cif15, kMp4, kHeAac, "AVC_MP4_BL_L12_CIF15_HEACC"},
    {kAvcBaseL1bQcif15, kMp4, kHeAacL2, "AVC_MP4_BL_L1B_QCIF15_HEACC"},
    {kAvcBaseCif15, k3gpp, kAmrWbPlus, "AVC_3GPP_BL_CIF15_AMR_WBplus"},
    {kAvc3gppQcif15, k3gpp, kAac, "AVC_3GPP_BL_QCIF15_AAC"},
    {kAvc3gppQcif15, k3gpp, kAacLtp, "AVC_3GPP_BL_QCIF15_AAC_LTP"},
    {kAvc3gppQcif15, k3gpp, kHeAac, "AVC_3GPP_BL_QCIF15_HEAAC"},
    {kAvc3gppQcif15, k3gpp, kAmr, "AVC_3GPP_BL_QCIF15_AMR"},
    {kAvc3gppQcif15, k3gpp, kAmrWbPlus, "AVC_3GPP_BL_QCIF15_AMR_WBplus"},
    {kAvcBaseCif30, k3gpp, kAmrWbPlus, "AVC_3GPP_BL_CIF30_AMR_WBplus"},
};
static_assert(std::size(kVideoProfiles) == 169, "no row lost");

constexpr orx::AudioProfile kAudioProfiles[] = {
    {kAacIso, "AAC_ISO"},
    {kAacIso320, "AAC_ISO_320"},
    {kAacAdts, "AAC_ADTS"},
    {kAacAdts320, "AAC_ADTS_320"},
    {kAacMulti5Iso, "AAC_MULT5_ISO"},
    {kAacMulti5Adts, "AAC_MULT5_ADTS"},
    {kHeAacL2Iso, "HEAAC_L2_ISO"},
    {kHeAacL2Iso320, "HEAAC_L2_ISO_320"},
    {kHeAacL2Adts, "HEAAC_L2_ADTS"},
    {kHeAacL2Adts320, "HEAAC_L2_ADTS_320"},
    {kHeAacL3Iso, "HEAAC_L3_ISO"},
    {kHeAacL3Adts, "HEAAC_L3_ADTS"},
    {kHeAacMulti5Iso, "HEAAC_MULT5_ISO"},
    {kHeAacMulti5Adts, "HEAAC_MULT5_ADTS"},
    {kAacLtpIso, "AAC_LTP_ISO"},
    {kAacLtpMulti5Iso, "AAC_LTP_MULT5_ISO"},
    {kAacLtpMulti7Iso, "AAC_LTP_MULT7_ISO"},
    {kBsacIso, "BSAC_ISO"},
    {kBsacMulti5Iso, "BSAC_MULT5_ISO"},
};
static_assert(std::size(kAudioProfiles) == 19, "no row lost");

// ---- from what was read to the keys ----

constexpr int kAvc = 2;                    // VideoCodec
constexpr int kBaseline = 6, kMain = 5;    // AvcProfile
constexpr int kMostBitrateOf320 = 320999;  // bits per second that still count as 320 kbit/s

enum AudioType {  // of a record
  kTypeUnknown = 0,
  kTypeAacLc = 1,
  kTypeHeAac = 3,
  kTypeAacMulti = 4,
  kTypeAacLtp = 15,
  kTypeBsac = 18,
  kTypeAdts = 20,
  kTypeHeAacAdts = 21,
};

// 0 when the level has no class.
int BaselineClass(const mp4_metadata_t& meta) {
  const double level = meta.AvcLevel;
  if (level < 0) return 0;
  if (level < 1.2)
    return meta.Width == 176 && meta.Height == 144 ? kAvcBaseL1bQcif15 : kAvcBaseCif15;
  if (level == 1.2 || level == 2.0)
    return meta.FrameRate < 15.0 ? kAvcBaseL12Cif15 : kAvcBaseL2Cif30;
  if (level < 2.0) return kAvcBaseCif30;
  if (level < 3.0) return kAvcBaseL3lSd;
  return level == 3.0 ? kAvcBaseL3Sd : 0;
}

int MainClass(const mp4_metadata_t& meta) {
  if (meta.VideoBitrate > 10000999) return kAvcMainHd;
  return meta.VideoBitrate < 1000 ? 0 : kAvcMainSd;
}

int SetAudio(int code, int profile, mp4_metadata_t* meta) {
  meta->TableAudioCode = code;
  meta->AudioProfileId = profile;
  return 0;
}

// A film of one of these classes may also carry the profile of the class below.
bool TakesClassBelow(int videoId) {
  return videoId == kAvcBaseL3Sd || videoId == kAvcBaseL2Cif30 || videoId == kAvcBaseL12Cif15;
}

}  // namespace

int mp4_confirm_mpeg4_video(mp4_metadata_t* meta) {
  if (meta == nullptr) return -1;
  meta->VideoId = 0;
  if (meta->VideoCodec != kAvc) return -1;
  if (meta->AvcProfile == kBaseline) {
    meta->VideoId = BaselineClass(*meta);
    return meta->VideoId == 0 ? -1 : 0;
  }
  if (meta->AvcProfile != kMain) return -1;
  meta->VideoId = MainClass(*meta);
  return 0;
}

int mp4_confirm_mpeg4_audio(mp4_metadata_t* meta) {
  if (meta == nullptr) return -1;
  const int channels = meta->Channels;
  switch (meta->AudioType) {
    case kTypeUnknown:
      return SetAudio(kAac, kAacIso320, meta);
    case kTypeAacLc:  // the "_320" profile is that of the lower bit rates
      if (channels > 2) return SetAudio(kAacMulti5, kAacMulti5Iso, meta);
      return SetAudio(kAac, meta->AudioBitrate > kMostBitrateOf320 ? kAacIso : kAacIso320, meta);
    case kTypeHeAac:
      return channels >= 3 ? SetAudio(kHeAacMulti5, kHeAacMulti5Iso, meta)
                           : SetAudio(kHeAac, kHeAacL2Iso, meta);
    case kTypeAacMulti:
      return SetAudio(kAacMulti5, kAacMulti5Iso, meta);
    case kTypeAacLtp:
      if (channels >= 7) return SetAudio(kAacLtpMulti7, kAacLtpMulti7Iso, meta);
      return channels >= 3 ? SetAudio(kAacLtpMulti5, kAacLtpMulti5Iso, meta)
                           : SetAudio(kAacLtp, kAacLtpIso, meta);
    case kTypeBsac:
      return channels >= 3 ? SetAudio(kBsacMulti5, kBsacMulti5Iso, meta)
                           : SetAudio(kBsac, kBsacIso, meta);
    default:
      return -1;
  }
}

int mp4_confirm_mpeg2_audio(mp4_metadata_t* meta) {
  if (meta == nullptr) return -1;
  const bool above320 = meta->AudioBitrate > kMostBitrateOf320;
  const bool multi = meta->Channels >= 3;
  switch (meta->AudioType) {
    case kTypeAdts:  // the "_320" profile is that of the lower bit rates
      if (multi) return SetAudio(kAacInAdts, kAacMulti5Adts, meta);
      return SetAudio(kAacInAdts, above320 ? kAacAdts : kAacAdts320, meta);
    case kTypeHeAacAdts:  // here it is that of the higher ones
      if (multi) return SetAudio(kHeAacInAdts, kHeAacMulti5Adts, meta);
      return SetAudio(kHeAacInAdts, above320 ? kHeAacL2Adts320 : kHeAacL2Adts, meta);
    case kTypeUnknown:
      return SetAudio(kAac, kAacIso320, meta);
    default:
      return -1;
  }
}

namespace orx {

ProfileTable<VideoProfile> VideoProfiles() { return {kVideoProfiles, std::size(kVideoProfiles)}; }
ProfileTable<AudioProfile> AudioProfiles() { return {kAudioProfiles, std::size(kAudioProfiles)}; }

const char* FindVideoProfile(const mp4_dlna_prop_t& prop) {
  for (const VideoProfile& row : kVideoProfiles) {
    const bool classFits = row.videoId == prop.VideoId ||
                           (TakesClassBelow(prop.VideoId) && row.videoId == prop.VideoId - 1);
    if (classFits && row.container == prop.ContainerCode && row.audioCode == prop.TableAudioCode)
      return row.name;
  }
  return nullptr;
}

const char* FindAudioProfile(const mp4_dlna_prop_t& prop) {
  for (const AudioProfile& row : kAudioProfiles)
    if (row.id == prop.AudioProfileId) return row.name;
  return nullptr;
}

}  // namespace orx
