package com.morvin.dom.telephony.sniffer.jvmtest;

import com.morvin.dom.telephony.sniffer.EmbeddedPacketChannel;
import java.io.File;
import java.io.IOException;
import java.nio.file.Files;
import java.util.Arrays;
import java.util.List;
import java.util.concurrent.TimeUnit;

/** How runs start, refuse, fail and end inside a JVM. */
public final class LifecycleTest extends LoopbackTest {

    // What "at once" allows on a loaded machine: set-up of lo takes milliseconds.
    private static final long PROMPT_MS = 2000;

    private LifecycleTest() throws IOException {}

    public static void main(String[] args) throws Exception {
        new LifecycleTest().runAll();
    }

    @Override
    void cases(Check check) {
        check.run("without a run breakMainLoop and getPacket do nothing", this::idle);
        check.run("a second mainLoop returns at once with an ERROR line", this::secondMainLoop);
        check.run("breakMainLoop from another thread ends mainLoop with everything joined", this::breakJoins);
        check.run("a bad filter is reported on standard error", this::badFilter);
        check.run("mainLoop with a bad filter returns at once and the next run captures", this::runAfterFailedSetup);
    }

    private TestHost start() throws Exception {
        return TestHost.start("lo", "udp and dst port " + proxy.port, -1);
    }

    private void idle() throws Exception {
        EmbeddedPacketChannel channel = new EmbeddedPacketChannel("lo", "udp", -1, false);
        channel.breakMainLoop();
        byte[] buffer = new byte[64];
        Arrays.fill(buffer, (byte) 0x5A);
        byte[] untouched = buffer.clone();
        Check.equal(0, channel.getPacket(buffer), "getPacket without a run");
        Check.bytes(untouched, buffer, "array after getPacket without a run");

        // The earlier breakMainLoop must not end the next run.
        try (TestHost host = start()) {
            Thread.sleep(1500);
            Check.that(host.running(), "mainLoop ended without breakMainLoop");
            passSip(host, 1);
        }
    }

    private void secondMainLoop() throws Exception {
        try (TestHost host = start()) {
            int refusals = TestHost.logCount("ERROR mainLoop is already running");
            TestHost second = new TestHost(new EmbeddedPacketChannel("lo", "udp", -1, false));
            Check.that(second.awaitEnd(PROMPT_MS), "the second mainLoop did not return");
            Check.equal(refusals + 1, TestHost.logCount("ERROR mainLoop is already running"), "ERROR lines");
            passSip(host, 1);
        }
    }

    private void breakJoins() throws Exception {
        TestHost host = TestHost.start("lo;lo", "udp and dst port " + proxy.port, -1);
        int mark = TestHost.logLines().size();
        host.channel.breakMainLoop();
        Check.that(host.awaitEnd(PROMPT_MS), "mainLoop did not return after breakMainLoop");
        List<String> lines = TestHost.logLines();
        Check.equal(List.of("INFO  Ending Sniffing ...",
                "INFO  Completed join with PCAP thread 0 status=0",
                "INFO  Completed join with PCAP thread 1 status=0",
                "INFO  Sniffing ended."),
                lines.subList(mark, lines.size()), "log of the stop");
    }

    private void badFilter() throws Exception {
        File err = File.createTempFile("bad-filter", ".err");
        try {
            Process child = new ProcessBuilder(
                    System.getProperty("java.home") + "/bin/java",
                    "-cp", System.getProperty("java.class.path"),
                    "-Djava.library.path=" + System.getProperty("java.library.path"),
                    BadFilterRun.class.getName())
                    .redirectOutput(ProcessBuilder.Redirect.DISCARD).redirectError(err).start();
            Check.that(child.waitFor(30, TimeUnit.SECONDS), "the child JVM did not end");
            String stderr = Files.readString(err.toPath());
            Check.equal(0, child.exitValue(), "child exit status (stderr: " + stderr + ")");
            Check.that(stderr.contains("Errors in setup, terminating...\n"), "standard error: " + stderr);
        } finally {
            err.delete();
        }
    }

    private void runAfterFailedSetup() throws Exception {
        TestHost failed = new TestHost(new EmbeddedPacketChannel("lo", BadFilterRun.BAD_FILTER, -1, false));
        Check.that(failed.awaitEnd(PROMPT_MS), "mainLoop with a bad filter did not return");
        try (TestHost host = start()) {
            passSip(host, 1);
        }
    }
}
