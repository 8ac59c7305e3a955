// All that a caller of libvomsg includes, floor by floor. Nothing inside the library includes this file.
//
// A message is read from a resource and is from then on a tree of entities:
//   VoMsgRfc822Message message;
//   VoErrorCode code = message.readFrom(new VoMsgFileResource("in.eml", nullptr, nullptr));
// docs/design.md tells who owns what; voFailed() tells a failure from a success.
#pragma once

// Results, the host's log, process-wide options.
#include "vomsg/encoding/VoUtf8.h"
#include "vomsg/foundation/VoErrorCode.h"
#include "vomsg/foundation/VoErrorText.h"
#include "vomsg/foundation/VoIntLog.h"
#include "vomsg/foundation/VoMsgDump.h"
#include "vomsg/foundation/VoMsgExport.h"
#include "vomsg/foundation/VoMsgLog.h"
#include "vomsg/foundation/VoMsgOptions.h"
#include "vomsg/foundation/VoMsgProcess.h"
#include "vomsg/foundation/VoMsgStandAloneLog.h"
#include "vomsg/foundation/VoObjectStub.h"
#include "vomsg/foundation/VoUUID.h"

// Charset names and conversion.
#include "vomsg/charset/convert/VoCharsetName.h"
#include "vomsg/charset/convert/VoConvertCharset.h"
#include "vomsg/charset/convert/VoGetnUnicodeString.h"
#include "vomsg/charset/convert/VoMsgBIG5ToUTF8TwConverter.h"
#include "vomsg/charset/convert/VoMsgCharsetConverter.h"
#include "vomsg/charset/convert/VoMsgConverterFactory.h"
#include "vomsg/charset/convert/VoMsgEUCToJISJpConverter.h"
#include "vomsg/charset/convert/VoMsgEUCToSJISJpConverter.h"
#include "vomsg/charset/convert/VoMsgEUCToUTF8CnConverter.h"
#include "vomsg/charset/convert/VoMsgGBToHZCnConverter.h"
#include "vomsg/charset/convert/VoMsgHZToGBCnConverter.h"
#include "vomsg/charset/convert/VoMsgHZToUTF8CnConverter.h"
#include "vomsg/charset/convert/VoMsgICUConverter.h"
#include "vomsg/charset/convert/VoMsgJISToASCIIJpConverter.h"
#include "vomsg/charset/convert/VoMsgJISToEUCJpConverter.h"
#include "vomsg/charset/convert/VoMsgJISToSJISJpConverter.h"
#include "vomsg/charset/convert/VoMsgJISToUTF8JpConverter.h"
#include "vomsg/charset/convert/VoMsgPairConverter.h"
#include "vomsg/charset/convert/VoMsgSJISToEUCJpConverter.h"
#include "vomsg/charset/convert/VoMsgSJISToJISJpConverter.h"
#include "vomsg/charset/convert/VoMsgSJISToUTF8JpConverter.h"
#include "vomsg/charset/convert/VoMsgToISO8859EuConverter.h"
#include "vomsg/charset/convert/VoMsgToUTF8EuConverter.h"
#include "vomsg/charset/convert/VoMsgUTF8ToBIG5TwConverter.h"
#include "vomsg/charset/convert/VoMsgUTF8ToEUCCnConverter.h"
#include "vomsg/charset/convert/VoMsgUTF8ToISO8859EuConverter.h"
#include "vomsg/charset/convert/VoMsgUTF8ToJISJpConverter.h"
#include "vomsg/charset/convert/VoMsgUTF8ToSJISJpConverter.h"
#include "vomsg/charset/convert/VoUnicodeTable.h"

// Byte streams.
#include "vomsg/foundation/VoMsgBufferedReader.h"
#include "vomsg/foundation/VoMsgBufferedWriter.h"
#include "vomsg/foundation/VoMsgFileReader.h"
#include "vomsg/foundation/VoMsgFileWriter.h"
#include "vomsg/foundation/VoMsgMemoryReader.h"
#include "vomsg/foundation/VoMsgMemoryWriter.h"

// Strings, boundaries, resources.
#include "vomsg/foundation/VoMsgBoundary.h"
#include "vomsg/foundation/VoMsgFileResource.h"
#include "vomsg/foundation/VoMsgMemoryResource.h"
#include "vomsg/foundation/VoMsgMultiString.h"
#include "vomsg/foundation/VoMsgResourceDump.h"
#include "vomsg/foundation/VoMsgResourceLocator.h"
#include "vomsg/foundation/VoMsgResourceManager.h"
#include "vomsg/foundation/VoMsgString.h"
#include "vomsg/foundation/VoMsgTokenizer.h"

// Transfer encodings.
#include "vomsg/encoding/VoBase64.h"
#include "vomsg/encoding/VoBinHex.h"
#include "vomsg/encoding/VoBinHexCoding.h"
#include "vomsg/encoding/VoCompressedRtf.h"
#include "vomsg/encoding/VoHexChar.h"
#include "vomsg/encoding/VoQuotedPrintable.h"
#include "vomsg/encoding/VoUUEncode.h"

// What charset a text is in.
#include "vomsg/charset/detect/VoMsgCharSetAnalysis.h"
#include "vomsg/charset/detect/VoMsgCharSetDetector.h"
#include "vomsg/charset/detect/VoMsgCharSetDetectorFacade.h"
#include "vomsg/charset/detect/VoMsgCodingStateMachine.h"
#include "vomsg/charset/detect/VoMsgDetectorSession.h"
#include "vomsg/charset/detect/VoMsgDistributionDetector.h"
#include "vomsg/charset/detect/VoMsgFrequenceTables.h"
#include "vomsg/charset/detect/VoMsgGroupDetector.h"
#include "vomsg/charset/detect/VoMsgMBCSGroupDetector.h"
#include "vomsg/charset/detect/VoMsgSBCSGroupDetector.h"
#include "vomsg/charset/detect/VoMsgSchemeDetector.h"
#include "vomsg/charset/detect/VoMsgSequenceDetector.h"
#include "vomsg/charset/detect/VoMsgUTF8Detector.h"
#include "vomsg/charset/detect/tables/VoMsgSMModels.h"
#include "vomsg/charset/detect/tables/VoMsgSequenceModels.h"
#include "vomsg/filter/VoMsgPlainTextFilter.h"
#include "vomsg/filter/VoMsgTextFilterSession.h"
#include "vomsg/filter/VoMsgTextFormatFilter.h"
#include "vomsg/filter/VoMsgTextFormatFilterPool.h"

// Header fields.
#include "vomsg/header/VoMsgEncodedWord.h"
#include "vomsg/header/VoMsgEntityHeader.h"
#include "vomsg/header/VoMsgHeaderField.h"
#include "vomsg/header/VoMsgHeaderParameter.h"
#include "vomsg/header/VoMsgUserAddress.h"

// What is odd about a message.
#include "vomsg/anomaly/VoMsgAnomaly.h"
#include "vomsg/anomaly/VoMsgAnomalyList.h"

// The entity tree and messages.
#include "vomsg/entity/VoMsgEntity.h"
#include "vomsg/entity/VoMsgEntityBody.h"
#include "vomsg/entity/VoMsgEntityIterator.h"
#include "vomsg/entity/VoMsgMailMessage.h"
#include "vomsg/entity/VoMsgMailSessionInfo.h"
#include "vomsg/entity/VoMsgMimeEntity.h"
#include "vomsg/entity/VoMsgMultipartBody.h"
#include "vomsg/entity/VoMsgRfc822Entity.h"
#include "vomsg/entity/VoMsgRfc822Message.h"
#include "vomsg/entity/VoMsgSingleBody.h"
#include "vomsg/entity/VoMsgSmtpSessionInfo.h"

// Attachments that stand in text.
#include "vomsg/embedded/VoMsgEmbededEntity.h"
#include "vomsg/embedded/VoMsgMultiEmbededEntity.h"

// TNEF streams: "winmail.dat".
#include "vomsg/tnef/VoMsgMapiAttachment.h"
#include "vomsg/tnef/VoMsgMapiData.h"
#include "vomsg/tnef/VoMsgMapiProperty.h"
#include "vomsg/tnef/VoMsgTnefAttachData.h"
#include "vomsg/tnef/VoMsgTnefAttribute.h"
#include "vomsg/tnef/VoMsgTnefBody.h"
#include "vomsg/tnef/VoMsgTnefEntity.h"
#include "vomsg/tnef/VoMsgTnefMessage.h"
#include "vomsg/tnef/VoTnefInteger.h"
