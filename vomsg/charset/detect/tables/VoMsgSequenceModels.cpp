#include "vomsg/charset/detect/tables/VoMsgSequenceModels.h"

const SequenceModel Koi8rModel = {KOI8R_CharToOrderMap, RussianLangModel, 0.976601f, false, "KOI8-R"};
const SequenceModel Win1251Model = {win1251_CharToOrderMap, RussianLangModel, 0.976601f, false, "windows-1251"};
const SequenceModel Latin5Model = {latin5_CharToOrderMap, RussianLangModel, 0.976601f, false, "ISO-8859-5"};
const SequenceModel MacCyrillicModel = {macCyrillic_CharToOrderMap, RussianLangModel, 0.976601f, false,
                                        "x-mac-cyrillic"};
const SequenceModel Ibm866Model = {IBM866_CharToOrderMap, RussianLangModel, 0.976601f, false, "IBM866"};
const SequenceModel Ibm855Model = {IBM855_CharToOrderMap, RussianLangModel, 0.976601f, false, "IBM855"};
const SequenceModel Latin7Model = {Latin7_CharToOrderMap, GreekLangModel, 0.982851f, false, "ISO-8859-7"};
const SequenceModel Win1253Model = {win1253_CharToOrderMap, GreekLangModel, 0.982851f, false, "windows-1253"};
const SequenceModel Latin5BulgarianModel = {Latin5_BulgarianCharToOrderMap, BulgarianLangModel, 0.969392f, false,
                                            "ISO-8859-5"};
const SequenceModel Win1251BulgarianModel = {win1251BulgarianCharToOrderMap, BulgarianLangModel, 0.969392f, false,
                                             "windows-1251"};
const SequenceModel Latin2HungarianModel = {Latin2_HungarianCharToOrderMap, HungarianLangModel, 0.947368f, true,
                                            "ISO-8859-2"};
const SequenceModel Win1250HungarianModel = {win1250HungarianCharToOrderMap, HungarianLangModel, 0.947368f, true,
                                             "windows-1250"};
const SequenceModel TIS620ThaiModel = {TIS620CharToOrderMap, ThaiLangModel, 0.926386f, false, "TIS-620"};
