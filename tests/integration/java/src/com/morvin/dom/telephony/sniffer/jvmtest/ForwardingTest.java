package com.morvin.dom.telephony.sniffer.jvmtest;

import static com.morvin.dom.telephony.sniffer.EmbeddedPacketChannel.PROTOCOL_RTP;
import static com.morvin.dom.telephony.sniffer.EmbeddedPacketChannel.PROTOCOL_SIP;

import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.util.Arrays;
import java.util.HashMap;
import java.util.Map;

/** Live capture on lo inside a JVM: what the host gets from getPacket and what its requests change. */
public final class ForwardingTest extends LoopbackTest {

    // libpcap hands packets over up to a second late: silence is waited for this long.
    private static final long QUIET_MS = 2500;
    private static final int RTP_PORT = 8000;

    private ForwardingTest() throws IOException {}

    public static void main(String[] args) throws Exception {
        new ForwardingTest().runAll();
    }

    @Override
    void cases(Check check) {
        check.run("a frame longer than the array stays queued", this::shortArray);
        check.run("request 1 127.0.0.1:8000 forwards datagrams there as RTP until request 2, other datagrams"
                + " are not forwarded, a heartbeat request is answered once, a short request is refused",
                this::requests);
        check.run("a host that does not synchronise still gets every frame intact", this::unsynchronisedHost);
        check.run("two devices capture a packet each, and packetCount 10 ends each after ten", this::packetCount);
    }

    private static byte[] rtp(int sequence) {
        byte[] packet = new byte[12 + 160];
        packet[0] = (byte) 0x80;
        packet[3] = (byte) sequence;
        return packet;
    }

    private String filter() {
        return "udp and (dst port " + proxy.port + " or dst port " + RTP_PORT + ")";
    }

    private void shortArray() throws Exception {
        try (TestHost host = TestHost.start("lo", filter(), -1)) {
            phone.send(proxy.port, invite(2));
            byte[] oneShort = new byte[phone.frame(PROTOCOL_SIP, proxy.port, invite(2)).length - 1];
            long end = System.currentTimeMillis() + QUIET_MS;
            while (System.currentTimeMillis() < end) {
                int length;
                synchronized (host.channel) {
                    length = host.channel.getPacket(oneShort);
                }
                Check.equal(0, length, "getPacket with an array one byte short");
                Check.bytes(new byte[oneShort.length], oneShort, "array after the refused getPacket");
                Thread.sleep(10);
            }
            expectSip(host, invite(2));
        }
    }

    private void requests() throws Exception {
        try (TestHost host = TestHost.start("lo", filter(), -1)) {
            Check.equal(7, host.sendRequest(1, 127, 0, 0, 1, 0x1F, 0x40), "sendRequest of an add");
            phone.send(proxy.port, "not a SIP message".getBytes(StandardCharsets.US_ASCII));
            passSip(host, 3);
            for (int i = 0; i < 3; i++) {
                phone.send(RTP_PORT, rtp(i));
                Check.bytes(phone.frame(PROTOCOL_RTP, RTP_PORT, rtp(i)),
                        host.nextFrame(fromPhoneOrHeartbeat(), FRAME_TIMEOUT_MS), "RTP frame " + i);
            }
            Check.equal(7, host.sendRequest(2, 127, 0, 0, 1, 0x1F, 0x40), "sendRequest of a removal");
            passSip(host, 4);
            phone.send(RTP_PORT, rtp(3));
            passSip(host, 5);  // right after the previous one: the RTP datagram was not forwarded

            Check.equal(0, host.sendRequest(3, 0, 0, 0, 0, 0), "sendRequest with six bytes");
            Check.equal(9, host.sendRequest(3, 0, 0, 0, 0, 0, 0, 9, 9), "sendRequest with nine bytes");
            passSip(host, 6);
            byte[] reply = host.nextFrame(fromPhoneOrHeartbeat(), FRAME_TIMEOUT_MS);
            Check.that(reply != null, "no heartbeat reply");
            Check.equal(15, reply.length, "heartbeat reply length");
            Check.bytes(new byte[] {0x00, 0x0F, 0x03}, Arrays.copyOf(reply, 3), "heartbeat reply start");
            passSip(host, 7);  // and no second reply before it
        }
    }

    private void unsynchronisedHost() throws Exception {
        try (TestHost host = TestHost.start("lo", filter(), -1)) {
            host.synchronise = false;
            for (int i = 0; i < 300; i++) {
                phone.send(proxy.port, invite(1000 + i));
            }
            for (int i = 0; i < 300; i++) {
                expectSip(host, invite(1000 + i));
            }
        }
    }

    private void packetCount() throws Exception {
        Map<Integer, Integer> seen = new HashMap<>();
        try (TestHost host = TestHost.start("lo;lo", filter(), 10)) {
            for (int i = 0; i < 15; i++) {
                phone.send(proxy.port, invite(100 + i));
                Thread.sleep(10);
            }
            byte[] frame;
            while ((frame = host.nextFrame(phone::sent, QUIET_MS)) != null) {
                for (int i = 0; i < 15; i++) {
                    if (Arrays.equals(phone.frame(PROTOCOL_SIP, proxy.port, invite(100 + i)), frame)) {
                        seen.merge(i, 1, Integer::sum);
                    }
                }
            }
            Check.that(host.running(), "mainLoop returned before breakMainLoop");
        }
        Map<Integer, Integer> expected = new HashMap<>();
        for (int i = 0; i < 10; i++) {
            expected.put(i, 2);
        }
        Check.equal(expected, seen, "frames per message (message number = count)");
    }
}
