package com.morvin.dom.telephony.sniffer;

import java.net.InetAddress;
import java.util.Objects;

/**
 * The in-process link to the VoIP sniffer ({@code libsniffer.so}).
 *
 * <p>The sniffer captures on one or more network devices and forwards what a
 * recorder needs: every SIP message carried in UDP, the RTP streams whose
 * destination the recorder has asked for, and a text description of each
 * H.323 call. Inside a Java process the recorder is the host itself: frames
 * wait in a queue inside the library until the host takes them with
 * {@link #getPacket}, and the host's commands go the other way with
 * {@link #sendRequest}.
 *
 * <h2>Threads</h2>
 * <ul>
 * <li>One thread calls {@link #mainLoop}. It does not return while the
 * sniffer runs: that thread classifies and frames every captured packet.</li>
 * <li>Another thread calls {@link #breakMainLoop} to end the run;
 * {@code mainLoop} then returns.</li>
 * <li>Any thread drains frames with {@link #getPacket} and issues commands
 * with {@link #sendRequest}, both while synchronised on the channel object
 * that runs {@code mainLoop} ({@code synchronized (channel) { ... }}). The
 * library takes the same monitor around its own queue accesses; it also takes
 * it inside these two methods, so a caller that forgets is still safe, but
 * holding it lets a caller drain several frames under one lock.</li>
 * </ul>
 * Neither {@code getPacket} nor {@code sendRequest} ever blocks: poll, and
 * sleep a little when {@code getPacket} returns 0.
 *
 * <h2>Frames</h2>
 * Every frame starts with a {@value #HEADER_LENGTH}-byte header, all fields
 * big-endian: length of the whole frame (2 bytes), protocol (1 byte:
 * {@link #PROTOCOL_SIP}, {@link #PROTOCOL_RTP}, {@link #PROTOCOL_HEARTBEAT},
 * {@link #PROTOCOL_H323}), destination IPv4 address (4) and port (2), source
 * IPv4 address (4) and port (2). The captured UDP payload follows for SIP and
 * RTP; the call description text, ended by a zero byte, for H.323; nothing
 * for a heartbeat reply, whose address and port bytes carry no meaning.
 *
 * <h2>Run</h2>
 * There is one sniffer per process: a second {@code mainLoop} while one runs
 * returns at once (an ERROR line is logged). After {@code mainLoop} has
 * returned a new one may be started, on this channel or another. Frames not
 * taken when a run ends are dropped. The library logs through log4cxx,
 * configured from {@code ./log4cxx.properties} in the process's working
 * directory at each {@code mainLoop}. Capturing needs the CAP_NET_RAW
 * capability (or root).
 */
public class EmbeddedPacketChannel {

    /** Length of the header in front of every frame. */
    public static final int HEADER_LENGTH = 15;
    /**
     * Size of the array to pass to {@link #getPacket}: the length field of a
     * frame is 16 bits wide, so an array this long holds every frame.
     */
    public static final int MAX_FRAME_LENGTH = 65535;
    /** Length of a command given to {@link #sendRequest}. */
    public static final int REQUEST_LENGTH = 7;

    /** Protocol byte of a SIP message frame. */
    public static final int PROTOCOL_SIP = 1;
    /** Protocol byte of an RTP or RTCP packet frame. */
    public static final int PROTOCOL_RTP = 2;
    /** Protocol byte of the reply to a {@link #REQUEST_HEARTBEAT}. */
    public static final int PROTOCOL_HEARTBEAT = 3;
    /** Protocol byte of an H.323 call description frame. */
    public static final int PROTOCOL_H323 = 4;

    /** Command: forward UDP datagrams sent to the given address and port. */
    public static final int REQUEST_ADD_RTP = 1;
    /** Command: stop forwarding UDP datagrams sent to the given address and port. */
    public static final int REQUEST_REMOVE_RTP = 2;
    /** Command: answer with a {@link #PROTOCOL_HEARTBEAT} frame. */
    public static final int REQUEST_HEARTBEAT = 3;

    static {
        System.loadLibrary("sniffer");
    }

    // Read by the library when mainLoop starts; the names are its interface.
    private final String nicDevice;
    private final String packetFilter;
    private final int packetCount;
    private final boolean traceSignalling;

    /**
     * @param nicDevice devices to capture on, separated by ';' (at most 10),
     *        for example {@code "eth1;eth2"}
     * @param packetFilter libpcap filter expression, for example
     *        {@code "udp or tcp"}; one that does not compile makes
     *        {@code mainLoop} return at once
     * @param packetCount packets each device captures before its capture
     *        ends, or -1 for no end; {@code mainLoop} still runs until
     *        {@link #breakMainLoop}
     * @param traceSignalling log every decoded H.323 message at INFO
     */
    public EmbeddedPacketChannel(String nicDevice, String packetFilter, int packetCount,
            boolean traceSignalling) {
        this.nicDevice = Objects.requireNonNull(nicDevice, "nicDevice");
        this.packetFilter = Objects.requireNonNull(packetFilter, "packetFilter");
        this.packetCount = packetCount;
        this.traceSignalling = traceSignalling;
    }

    public String getNicDevice() {
        return nicDevice;
    }

    public String getPacketFilter() {
        return packetFilter;
    }

    public int getPacketCount() {
        return packetCount;
    }

    public boolean isTraceSignalling() {
        return traceSignalling;
    }

    /**
     * Opens the devices, installs the filter and runs the sniffer on the
     * calling thread until another thread calls {@link #breakMainLoop}.
     * Returns at once when set-up fails ("Errors in setup, terminating..." on
     * standard error) or when a run is already going on in this process.
     */
    public native void mainLoop();

    /**
     * Ends the run of {@link #mainLoop}: stops and joins the capture threads
     * and lets {@code mainLoop} return. Call it from a thread other than the
     * one inside {@code mainLoop}. A run still being set up ends before it
     * sniffs; without a run the call does nothing. Do not wait for
     * {@code mainLoop} to return while synchronised on the channel: its
     * thread takes the channel's monitor on its way out.
     */
    public native void breakMainLoop();

    /**
     * Takes the oldest waiting frame, header included. Call it while
     * synchronised on this channel.
     *
     * @param buffer receives the frame; pass {@link #MAX_FRAME_LENGTH} bytes
     * @return the frame's length, or 0 when no frame waits; also 0 when the
     *         waiting frame is longer than {@code buffer}, which is then left
     *         as it was while the frame stays queued
     */
    public native int getPacket(byte[] buffer);

    /**
     * Queues one command for the sniffer. It is carried out after the next
     * captured packet has been handled, so it waits while no traffic flows.
     * Call it while synchronised on this channel.
     *
     * @param buffer the command, big-endian: code (1 byte), IPv4 address (4),
     *        port (2); bytes after the seventh are ignored. See
     *        {@link #request}.
     * @return {@code buffer.length} when queued; 0 when the array is shorter
     *         than {@value #REQUEST_LENGTH} bytes, and then nothing is queued
     */
    public native int sendRequest(byte[] buffer);

    /**
     * Builds the {@value #REQUEST_LENGTH}-byte form of a command.
     *
     * @param code {@link #REQUEST_ADD_RTP}, {@link #REQUEST_REMOVE_RTP} or
     *        {@link #REQUEST_HEARTBEAT}
     * @param address an IPv4 address (ignored by a heartbeat)
     * @param port a UDP port (ignored by a heartbeat)
     */
    public static byte[] request(int code, InetAddress address, int port) {
        byte[] ip = address.getAddress();
        if (ip.length != 4) {
            throw new IllegalArgumentException("not an IPv4 address: " + address);
        }
        return new byte[] {(byte) code, ip[0], ip[1], ip[2], ip[3], (byte) (port >> 8), (byte) port};
    }
}
