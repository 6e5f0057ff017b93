package com.morvin.dom.telephony.sniffer.example;

import com.morvin.dom.telephony.sniffer.EmbeddedPacketChannel;
import java.net.InetAddress;
import java.nio.ByteBuffer;
import java.nio.charset.StandardCharsets;

/**
 * A minimal host: runs the sniffer on one thread, drains its frames on
 * another and prints one line per frame, until Ctrl-C.
 *
 * <pre>
 * java -Djava.library.path=build/sniffer -jar build/java/sniffer.jar [devices] [filter] [ip:port ...]
 * </pre>
 * Devices default to {@code lo}, the filter to {@code udp}. Each
 * {@code ip:port} asks the sniffer to forward the UDP datagrams sent there as
 * RTP frames.
 */
public final class FrameMonitor {

    private static final long IDLE_SLEEP_MS = 10;

    private FrameMonitor() {}

    public static void main(String[] args) throws Exception {
        String devices = args.length > 0 ? args[0] : "lo";
        String filter = args.length > 1 ? args[1] : "udp";
        EmbeddedPacketChannel channel = new EmbeddedPacketChannel(devices, filter, -1, false);

        Thread sniffer = new Thread(channel::mainLoop, "sniffer-main-loop");
        sniffer.start();
        Runtime.getRuntime().addShutdownHook(new Thread(() -> stop(channel, sniffer), "sniffer-stop"));

        for (int i = 2; i < args.length; i++) {
            int colon = args[i].lastIndexOf(':');
            byte[] request = EmbeddedPacketChannel.request(EmbeddedPacketChannel.REQUEST_ADD_RTP,
                    InetAddress.getByName(args[i].substring(0, colon)),
                    Integer.parseInt(args[i].substring(colon + 1)));
            synchronized (channel) {
                channel.sendRequest(request);
            }
        }

        byte[] frame = new byte[EmbeddedPacketChannel.MAX_FRAME_LENGTH];
        while (sniffer.isAlive()) {
            int length;
            synchronized (channel) {
                length = channel.getPacket(frame);
            }
            if (length == 0) {
                Thread.sleep(IDLE_SLEEP_MS);
            } else {
                System.out.println(describe(frame, length));
            }
        }
    }

    // mainLoop may not have been entered yet when Ctrl-C comes: ask again
    // until it has returned.
    private static void stop(EmbeddedPacketChannel channel, Thread sniffer) {
        try {
            do {
                channel.breakMainLoop();
                sniffer.join(200);
            } while (sniffer.isAlive());
        } catch (InterruptedException e) {
            Thread.currentThread().interrupt();
        }
    }

    /** One line: protocol, source and destination, length, and for text frames their first line. */
    static String describe(byte[] frame, int length) {
        ByteBuffer header = ByteBuffer.wrap(frame, 0, length);
        header.getShort();
        int protocol = header.get() & 0xFF;
        if (protocol == EmbeddedPacketChannel.PROTOCOL_HEARTBEAT) {
            return String.format("HEARTBEAT %d bytes", length);
        }
        String destination = address(header.getInt(), header.getShort());
        String source = address(header.getInt(), header.getShort());
        String line = String.format("%-4s %s -> %s %d bytes", name(protocol), source, destination, length);
        if (protocol == EmbeddedPacketChannel.PROTOCOL_RTP) {
            return line;
        }
        return line + "  " + firstLine(frame, EmbeddedPacketChannel.HEADER_LENGTH, length);
    }

    private static String name(int protocol) {
        switch (protocol) {
            case EmbeddedPacketChannel.PROTOCOL_SIP:
                return "SIP";
            case EmbeddedPacketChannel.PROTOCOL_RTP:
                return "RTP";
            case EmbeddedPacketChannel.PROTOCOL_H323:
                return "H323";
            default:
                return "?" + protocol;
        }
    }

    private static String address(int ip, short port) {
        return String.format("%d.%d.%d.%d:%d", ip >>> 24, ip >>> 16 & 0xFF, ip >>> 8 & 0xFF, ip & 0xFF,
                port & 0xFFFF);
    }

    private static String firstLine(byte[] frame, int from, int to) {
        int end = from;
        while (end < to && frame[end] != '\r' && frame[end] != '\n' && frame[end] != 0) {
            end++;
        }
        return new String(frame, from, end - from, StandardCharsets.ISO_8859_1);
    }
}
