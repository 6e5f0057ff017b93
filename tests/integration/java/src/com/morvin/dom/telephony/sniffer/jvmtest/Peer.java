package com.morvin.dom.telephony.sniffer.jvmtest;

import com.morvin.dom.telephony.sniffer.EmbeddedPacketChannel;
import java.io.IOException;
import java.net.DatagramPacket;
import java.net.DatagramSocket;
import java.net.InetAddress;
import java.net.SocketException;
import java.nio.ByteBuffer;

/** A UDP endpoint on 127.0.0.1 with a port of its own, so its traffic is told apart from anyone else's. */
final class Peer implements AutoCloseable {

    private static final int LOCALHOST = 0x7F000001;
    private static final InetAddress LOOPBACK = InetAddress.getLoopbackAddress();

    final int port;
    private final DatagramSocket socket;

    Peer() throws SocketException {
        socket = new DatagramSocket(0, LOOPBACK);
        port = socket.getLocalPort();
    }

    void send(int toPort, byte[] payload) throws IOException {
        socket.send(new DatagramPacket(payload, payload.length, LOOPBACK, toPort));
    }

    /** The frame the sniffer makes of a datagram this peer sent to `toPort`. */
    byte[] frame(int protocol, int toPort, byte[] payload) {
        return ByteBuffer.allocate(EmbeddedPacketChannel.HEADER_LENGTH + payload.length)
                .putShort((short) (EmbeddedPacketChannel.HEADER_LENGTH + payload.length))
                .put((byte) protocol)
                .putInt(LOCALHOST).putShort((short) toPort)
                .putInt(LOCALHOST).putShort((short) port)
                .put(payload)
                .array();
    }

    /** True for a frame made of a datagram this peer sent. */
    boolean sent(byte[] frame) {
        return frame.length > EmbeddedPacketChannel.HEADER_LENGTH
                && frame[2] != EmbeddedPacketChannel.PROTOCOL_HEARTBEAT
                && ByteBuffer.wrap(frame).getShort(13) == (short) port;
    }

    @Override
    public void close() {
        socket.close();
    }
}
