package com.morvin.dom.telephony.sniffer.jvmtest;

import com.morvin.dom.telephony.sniffer.EmbeddedPacketChannel;

/** Runs mainLoop once with a filter that does not compile and says how long it took. */
public final class BadFilterRun {

    static final String BAD_FILTER = "udp and (";

    private BadFilterRun() {}

    public static void main(String[] args) {
        EmbeddedPacketChannel channel = new EmbeddedPacketChannel("lo", BAD_FILTER, -1, false);
        long start = System.nanoTime();
        channel.mainLoop();
        System.out.println("mainLoop returned after " + (System.nanoTime() - start) / 1_000_000 + " ms");
    }
}
