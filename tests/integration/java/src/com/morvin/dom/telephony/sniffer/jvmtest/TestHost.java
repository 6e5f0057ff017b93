package com.morvin.dom.telephony.sniffer.jvmtest;

import com.morvin.dom.telephony.sniffer.EmbeddedPacketChannel;
import java.io.IOException;
import java.nio.charset.StandardCharsets;
import java.nio.file.Files;
import java.nio.file.Path;
import java.nio.file.Paths;
import java.util.Arrays;
import java.util.List;
import java.util.function.Predicate;

/** A channel whose mainLoop runs on a thread of its own, as a recording server runs it. */
final class TestHost implements AutoCloseable {

    static final Path LOG = Paths.get("sniffer.log");
    private static final long START_TIMEOUT_MS = 10_000;
    private static final long STOP_TIMEOUT_MS = 10_000;
    private static final long POLL_MS = 5;

    final EmbeddedPacketChannel channel;
    private final Thread loop;
    // Cleared to poll as a careless host does, without holding the channel's monitor.
    boolean synchronise = true;

    /** Writes the logging set-up that mainLoop reads from the working directory, and starts a fresh log. */
    static void prepareWorkingDirectory() throws IOException {
        Files.write(Paths.get("log4cxx.properties"), List.of(
                "log4j.rootLogger=INFO, file",
                "log4j.appender.file=org.apache.log4j.FileAppender",
                "log4j.appender.file.File=" + LOG,
                "log4j.appender.file.Append=true",
                "log4j.appender.file.layout=org.apache.log4j.PatternLayout",
                "log4j.appender.file.layout.ConversionPattern=%-5p %m%n"));
        Files.deleteIfExists(LOG);
    }

    /** Starts mainLoop and returns once every device's capture thread has been created. */
    static TestHost start(String devices, String filter, int packetCount) throws Exception {
        int threads = devices.split(";", -1).length;
        int before = logCount("PCAP thread created");
        TestHost host = new TestHost(new EmbeddedPacketChannel(devices, filter, packetCount, false));
        long deadline = System.currentTimeMillis() + START_TIMEOUT_MS;
        while (logCount("PCAP thread created") < before + threads) {
            if (!host.running() || System.currentTimeMillis() > deadline) {
                host.close();
                throw new AssertionError("mainLoop did not start capturing on " + devices);
            }
            Thread.sleep(POLL_MS);
        }
        return host;
    }

    TestHost(EmbeddedPacketChannel channel) {
        this.channel = channel;
        loop = new Thread(channel::mainLoop, "main-loop");
        loop.setDaemon(true);  // a failed check must not keep the JVM alive
        loop.start();
    }

    boolean running() {
        return loop.isAlive();
    }

    /** True when mainLoop has returned within the time given. */
    boolean awaitEnd(long timeoutMs) throws InterruptedException {
        loop.join(timeoutMs);
        return !loop.isAlive();
    }

    /** The next frame that `wanted` accepts, skipping others; null when none comes in time. */
    byte[] nextFrame(Predicate<byte[]> wanted, long timeoutMs) throws InterruptedException {
        byte[] buffer = new byte[EmbeddedPacketChannel.MAX_FRAME_LENGTH];
        long deadline = System.currentTimeMillis() + timeoutMs;
        while (System.currentTimeMillis() < deadline) {
            int length = getPacket(buffer);
            if (length == 0) {
                Thread.sleep(POLL_MS);
                continue;
            }
            byte[] frame = Arrays.copyOf(buffer, length);
            if (wanted.test(frame)) {
                return frame;
            }
        }
        return null;
    }

    private int getPacket(byte[] buffer) {
        if (!synchronise) {
            return channel.getPacket(buffer);
        }
        synchronized (channel) {
            return channel.getPacket(buffer);
        }
    }

    int sendRequest(int... request) {
        byte[] wire = new byte[request.length];
        for (int i = 0; i < request.length; i++) {
            wire[i] = (byte) request[i];
        }
        synchronized (channel) {
            return channel.sendRequest(wire);
        }
    }

    /** Asks for the end until mainLoop has returned (it may still be setting up). */
    @Override
    public void close() {
        long deadline = System.currentTimeMillis() + STOP_TIMEOUT_MS;
        try {
            while (running()) {
                if (System.currentTimeMillis() > deadline) {
                    throw new AssertionError("mainLoop did not return after breakMainLoop");
                }
                channel.breakMainLoop();
                loop.join(200);
            }
        } catch (InterruptedException e) {
            Thread.currentThread().interrupt();
            throw new AssertionError("interrupted while stopping mainLoop", e);
        }
    }

    static List<String> logLines() throws IOException {
        return Files.exists(LOG) ? Files.readAllLines(LOG, StandardCharsets.ISO_8859_1) : List.of();
    }

    static int logCount(String text) throws IOException {
        return (int) logLines().stream().filter(line -> line.contains(text)).count();
    }
}
