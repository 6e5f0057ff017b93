// The recorder's parsers and decoders on their own, where a fault would hide behind the
// end-to-end tests.
#include "G711.h"
#include "H323Description.h"
#include "Rtp.h"
#include "Sdp.h"
#include "SipMessage.h"

#include <gtest/gtest.h>

namespace recorder {
namespace {

TEST(RecorderG711, DecodesTheCodeWordsAtTheEndsAndTheMiddle) {
    const int ulaw[][2] = {{0xff, 0}, {0x7f, 0}, {0x80, 32124}, {0x00, -32124}, {0xfe, 8}, {0xef, 132}};
    for (const auto& [code, linear] : ulaw)
        EXPECT_EQ(ulawToLinear(static_cast<uint8_t>(code)), linear) << "u-law " << code;
    const int alaw[][2] = {{0xd5, 8}, {0x55, -8}, {0xaa, 32256}, {0x2a, -32256}, {0xc5, 264}};
    for (const auto& [code, linear] : alaw)
        EXPECT_EQ(alawToLinear(static_cast<uint8_t>(code)), linear) << "A-law " << code;
}

TEST(RecorderSdp, MediaLevelConnectionOverridesTheSessionsAndUnusableMediaIsLeftOut) {
    const std::string sdp =
        "v=0\r\no=- 1 1 IN IP4 10.0.0.1\r\ns=-\r\nc=IN IP4 10.0.0.1\r\nt=0 0\r\n"
        "m=audio 4000 RTP/AVP 8 101\r\na=rtpmap:101 telephone-event/8000\r\n"
        "m=video 4002 RTP/AVP 96\r\n"
        "m=audio 4004 RTP/AVP 0\r\nc=IN IP4 10.0.0.9\r\n"
        "m=audio 0 RTP/AVP 0\r\n"
        "m=audio 4006 RTP/AVP 0\r\nc=IN IP4 0.0.0.0\r\n";
    const std::vector<SdpMedia> media = parseSdpAudio(sdp);
    ASSERT_EQ(media.size(), 2u);
    EXPECT_EQ(toString(media[0].address), "10.0.0.1:4000");
    ASSERT_EQ(media[0].codecs.size(), 2u);
    EXPECT_EQ(media[0].codecs[0].name, "PCMA/8000");
    EXPECT_EQ(media[0].codecs[1].name, "telephone-event/8000");
    EXPECT_EQ(toString(media[1].address), "10.0.0.9:4004");
}

TEST(RecorderSip, ReadsCompactHeadersTagsAndTheSdpBody) {
    const std::string text =
        "SIP/2.0 183 Session Progress\r\n"
        "i: abc@host\r\n"
        "f: Alice <sip:alice@a.example>;tag=1234\r\n"
        "t: sip:bob@b.example;TAG=99\r\n"
        "CSeq: 5 INVITE\r\n"
        "c: application/sdp\r\n"
        "l: 4\r\n\r\n"
        "v=0\r\ntrailing";
    const auto message = parseSip(text);
    ASSERT_TRUE(message);
    EXPECT_FALSE(message->isRequest);
    EXPECT_EQ(message->status, 183);
    EXPECT_EQ(message->callId, "abc@host");
    EXPECT_EQ(message->from, "sip:alice@a.example");
    EXPECT_EQ(message->fromTag, "1234");
    EXPECT_EQ(message->to, "sip:bob@b.example");
    EXPECT_EQ(message->toTag, "99");
    EXPECT_EQ(message->cseqMethod, "INVITE");
    EXPECT_EQ(message->sdp, "v=0\r");
    EXPECT_FALSE(parseSip("HTTP/1.1 200 OK\r\n\r\n"));
}

TEST(RecorderH323, SplitsMediaTextsOnTheirPrefixes) {
    const H323Description description = parseH323Description(
        std::string("t:2\nr:7\nm:1:fcodec:g711Ulaw64k 20,rtp:10.0.0.5 49170rcodec:g7231 0,rtp:10.0.0.6 49172\n"
                    "a:3:rtp:10.0.0.7 1000rtp:10.0.0.8 2000\nm:4:rtp:10.0.0.9 3000") +
        '\0');
    EXPECT_EQ(description.type, 2);
    EXPECT_EQ(description.callReference, "7");
    ASSERT_EQ(description.media.size(), 5u);
    const char* expected[][2] = {{"10.0.0.5:49170", "g711Ulaw64k 20"},
                                 {"10.0.0.6:49172", "g7231 0"},
                                 {"10.0.0.7:1000", ""},
                                 {"10.0.0.8:2000", ""},
                                 {"10.0.0.9:3000", ""}};
    for (size_t i = 0; i < description.media.size(); ++i) {
        EXPECT_EQ(toString(description.media[i].address), expected[i][0]);
        EXPECT_EQ(description.media[i].codec, expected[i][1]);
    }
}

TEST(RecorderSequence, CountsAcrossTheWrapAndLatePacketsBeforeTheFirst) {
    SequenceCounter counter;
    for (const uint16_t sequence : {65533, 65535, 0, 2, 1, 65532})
        counter.add(sequence);
    EXPECT_EQ(counter.lost(), 1u);  // 65534
    EXPECT_EQ(counter.outOfOrder(), 2u);
}

}  // namespace
}  // namespace recorder
