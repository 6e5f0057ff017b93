package com.morvin.dom.telephony.sniffer.jvmtest;

import java.io.IOException;
import java.nio.file.Files;
import java.nio.file.Paths;
import java.util.Arrays;

/** Runs named cases, counts them and turns the count into the exit status. */
final class Check {

    /** CTest's skip status, for a machine where capturing is not allowed. */
    static final int SKIPPED = 77;
    private static final long CAP_NET_RAW = 1L << 13;

    interface Case {
        void run() throws Exception;
    }

    private int passed;
    private int failed;

    void run(String name, Case body) {
        try {
            body.run();
            passed++;
            System.out.println("PASS " + name);
        } catch (Throwable t) {
            failed++;
            System.out.println("FAIL " + name + ": " + t);
            t.printStackTrace(System.out);
        }
    }

    /** Prints the tally and ends the process, whatever threads a failure left behind. */
    void exit() {
        System.out.println(passed + " passed, " + failed + " failed");
        System.exit(failed == 0 ? 0 : 1);
    }

    static void that(boolean condition, String what) {
        if (!condition) {
            throw new AssertionError(what);
        }
    }

    static void equal(Object expected, Object actual, String what) {
        if (!expected.equals(actual)) {
            throw new AssertionError(what + ": expected " + expected + ", got " + actual);
        }
    }

    static void bytes(byte[] expected, byte[] actual, String what) {
        if (!Arrays.equals(expected, actual)) {
            throw new AssertionError(what + ":\n  expected " + hex(expected) + "\n  got      " + hex(actual));
        }
    }

    static String hex(byte[] data) {
        if (data == null) {
            return "nothing";
        }
        StringBuilder text = new StringBuilder();
        for (byte b : data) {
            text.append(String.format("%02X ", b & 0xFF));
        }
        return text.toString().trim();
    }

    /** Ends the program as skipped unless this process may capture packets. */
    static void requireCapture() throws IOException {
        for (String line : Files.readAllLines(Paths.get("/proc/self/status"))) {
            if (line.startsWith("CapEff:")
                    && (Long.parseUnsignedLong(line.substring(7).trim(), 16) & CAP_NET_RAW) != 0) {
                return;
            }
        }
        System.out.println("SKIP: capturing on lo needs CAP_NET_RAW");
        System.exit(SKIPPED);
    }
}
