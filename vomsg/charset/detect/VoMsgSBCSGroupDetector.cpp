#include "vomsg/charset/detect/VoMsgSBCSGroupDetector.h"

#include "vomsg/charset/detect/VoMsgSequenceDetector.h"

VoMsgSBCSGroupDetector::VoMsgSBCSGroupDetector() {
  for (const SequenceModel* model :
       {&Koi8rModel, &Win1251Model, &Latin5Model, &MacCyrillicModel, &Ibm866Model, &Ibm855Model, &Latin7Model,
        &Win1253Model, &Latin5BulgarianModel, &Win1251BulgarianModel, &Latin2HungarianModel, &Win1250HungarianModel,
        &TIS620ThaiModel})
    addMember(new VoMsgSequenceDetector(model));
}

VoMsgDetectorSession* VoMsgSBCSGroupDetector::handleData(const char* data, unsigned length,
                                                         VoMsgDetectorSession* session) {
  return VoMsgGroupDetector::handleData(data, length, session);
}
