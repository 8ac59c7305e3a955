// The single-byte language models. A map gives each byte of a charset the order of its letter in the language: below 64
// the most frequent letters, 250 and above symbols, digits and control bytes. A matrix says how likely two frequent
// letters in a row are, from 0 (hardly ever) to 3 (usual). So in KOI8-R the bytes 0xCE 0xC1 (Cyrillic "na") have the
// orders 5 and 3 and the category RussianLangModel[5 * 64 + 3], which is 3.
#pragma once

#include "vomsg/foundation/VoMsgExport.h"

extern VOMSG_API const unsigned char IBM855_CharToOrderMap[256];
extern VOMSG_API const unsigned char IBM866_CharToOrderMap[256];
extern VOMSG_API const unsigned char KOI8R_CharToOrderMap[256];
extern VOMSG_API const unsigned char Latin2_HungarianCharToOrderMap[256];
extern VOMSG_API const unsigned char Latin5_BulgarianCharToOrderMap[256];
extern VOMSG_API const unsigned char Latin7_CharToOrderMap[256];
extern VOMSG_API const unsigned char TIS620CharToOrderMap[256];
extern VOMSG_API const unsigned char latin5_CharToOrderMap[256];
extern VOMSG_API const unsigned char macCyrillic_CharToOrderMap[256];
extern VOMSG_API const unsigned char win1250HungarianCharToOrderMap[256];
extern VOMSG_API const unsigned char win1251BulgarianCharToOrderMap[256];
extern VOMSG_API const unsigned char win1251_CharToOrderMap[256];
extern VOMSG_API const unsigned char win1253_CharToOrderMap[256];

extern VOMSG_API const unsigned char BulgarianLangModel[4096];
extern VOMSG_API const unsigned char GreekLangModel[4096];
extern VOMSG_API const unsigned char HungarianLangModel[4096];
extern VOMSG_API const unsigned char RussianLangModel[4096];
extern VOMSG_API const unsigned char ThaiLangModel[4096];

struct SequenceModel {
  const unsigned char* charToOrderMap;    // 256 orders
  const unsigned char* precedenceMatrix;  // 64 x 64 categories, at previous order x 64 + order
  float typicalPositiveRatio;             // share of category 3 in usual text
  bool keepEnglishLetter;                 // carried along; no detector asks
  const char* charsetName;                // charset reported
};

extern VOMSG_API const SequenceModel Koi8rModel;
extern VOMSG_API const SequenceModel Win1251Model;
extern VOMSG_API const SequenceModel Latin5Model;
extern VOMSG_API const SequenceModel MacCyrillicModel;
extern VOMSG_API const SequenceModel Ibm866Model;
extern VOMSG_API const SequenceModel Ibm855Model;
extern VOMSG_API const SequenceModel Latin7Model;
extern VOMSG_API const SequenceModel Win1253Model;
extern VOMSG_API const SequenceModel Latin5BulgarianModel;
extern VOMSG_API const SequenceModel Win1251BulgarianModel;
extern VOMSG_API const SequenceModel Latin2HungarianModel;
extern VOMSG_API const SequenceModel Win1250HungarianModel;
extern VOMSG_API const SequenceModel TIS620ThaiModel;
