package com.morvin.dom.telephony.sniffer.jvmtest;

import com.morvin.dom.telephony.sniffer.EmbeddedPacketChannel;

/** Runs mainLoop once with a filter that does not compile. */
public final class BadFilterRun {

    static final String BAD_FILTER = "udp and (";

    private BadFilterRun() {}

    public static void main(String[] args) {
        new EmbeddedPacketChannel("lo", BAD_FILTER, -1, false).mainLoop();
    }
}
