package com.morvin.dom.telephony.sniffer.jvmtest;

import static com.morvin.dom.telephony.sniffer.EmbeddedPacketChannel.PROTOCOL_HEARTBEAT;
import static com.morvin.dom.telephony.sniffer.EmbeddedPacketChannel.PROTOCOL_SIP;

import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.util.function.Predicate;

/** A test program whose cases capture on lo what a phone sends to a proxy, both on 127.0.0.1. */
abstract class LoopbackTest {

    static final long FRAME_TIMEOUT_MS = 5000;

    final Peer phone;
    final Peer proxy;

    LoopbackTest() throws IOException {
        phone = new Peer();
        proxy = new Peer();
    }

    /** Runs each case with {@link Check#run}. */
    abstract void cases(Check check);

    /** Runs every case and ends the process with their tally. */
    final void runAll() throws IOException {
        Check.requireCapture();
        TestHost.prepareWorkingDirectory();
        Check check = new Check();
        try {
            cases(check);
        } finally {
            phone.close();
            proxy.close();
        }
        check.exit();
    }

    static byte[] invite(int n) {
        return ("INVITE sip:bob@127.0.0.1 SIP/2.0\r\nVia: SIP/2.0/UDP 127.0.0.1\r\nCall-ID: jvm-" + n
                + "@127.0.0.1\r\nCSeq: " + n + " INVITE\r\nContent-Length: 0\r\n\r\n")
                .getBytes(StandardCharsets.US_ASCII);
    }

    Predicate<byte[]> fromPhoneOrHeartbeat() {
        return frame -> phone.sent(frame) || frame[2] == PROTOCOL_HEARTBEAT;
    }

    void expectSip(TestHost host, byte[] message) throws Exception {
        Check.bytes(phone.frame(PROTOCOL_SIP, proxy.port, message),
                host.nextFrame(fromPhoneOrHeartbeat(), FRAME_TIMEOUT_MS), "SIP frame");
    }

    /** Sends INVITE n and expects its frame next; it also makes the engine read pending requests. */
    void passSip(TestHost host, int n) throws Exception {
        phone.send(proxy.port, invite(n));
        expectSip(host, invite(n));
    }
}
