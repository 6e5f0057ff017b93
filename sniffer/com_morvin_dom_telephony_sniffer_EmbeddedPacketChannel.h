/* Native methods of com.morvin.dom.telephony.sniffer.EmbeddedPacketChannel. */
#ifndef SNIFFER_COM_MORVIN_DOM_TELEPHONY_SNIFFER_EMBEDDED_PACKET_CHANNEL_H
#define SNIFFER_COM_MORVIN_DOM_TELEPHONY_SNIFFER_EMBEDDED_PACKET_CHANNEL_H

#include <jni.h>

#ifdef __cplusplus
extern "C" {
#endif

/* void mainLoop(): configures the engine from the channel's fields and runs
 * it on the calling thread until breakMainLoop(). */
JNIEXPORT void JNICALL Java_com_morvin_dom_telephony_sniffer_EmbeddedPacketChannel_mainLoop(JNIEnv*, jobject);

/* void breakMainLoop(): stops the run of mainLoop() from another thread. */
JNIEXPORT void JNICALL Java_com_morvin_dom_telephony_sniffer_EmbeddedPacketChannel_breakMainLoop(JNIEnv*, jobject);

/* int getPacket(byte[]): copies out the oldest forwarded frame; 0 when none
 * waits or when it does not fit the array. */
JNIEXPORT jint JNICALL Java_com_morvin_dom_telephony_sniffer_EmbeddedPacketChannel_getPacket(JNIEnv*, jobject,
                                                                                             jbyteArray);

/* int sendRequest(byte[]): queues one 7-byte recorder command; the array's
 * length when queued, 0 otherwise. */
JNIEXPORT jint JNICALL Java_com_morvin_dom_telephony_sniffer_EmbeddedPacketChannel_sendRequest(JNIEnv*, jobject,
                                                                                               jbyteArray);

#ifdef __cplusplus
}
#endif

#endif
