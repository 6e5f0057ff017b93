#include "com_morvin_dom_telephony_sniffer_EmbeddedPacketChannel.h"

#include <iostream>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include <log4cxx/logger.h>
#include <log4cxx/propertyconfigurator.h>

#include "EmbeddedConnection.h"
#include "Sniffer.h"

namespace {

log4cxx::LoggerPtr logger = log4cxx::Logger::getLogger("SnifferClient");

// What mainLoop reads from the channel object before it builds the engine.
struct HostSettings {
    std::string devices;
    std::string filter;
    int count = -1;
    bool traceSignalling = false;
};

// The one capture run of the process. The engine is published once its
// set-up has succeeded and withdrawn before it is deleted, both under `lock`,
// so that breakMainLoop never reaches an engine that is half built or gone.
struct Run {
    std::mutex lock;
    bool active = false;         // a mainLoop is between its entry and its return
    bool stopRequested = false;  // breakMainLoop came while set-up was under way
    Sniffer* sniffer = nullptr;  // set while startSniffing runs
};
Run run;

// The channel's monitor, entered with the environment of the thread inside
// mainLoop. That thread is the only one that touches the queues from the
// engine's side: it sends every frame, polls the commands after each packet
// and closes the queues when it deletes the engine.
class ChannelMonitor : public EmbeddedConnection::Monitor {
public:
    ChannelMonitor(JNIEnv* env, jobject channel) : mainLoop_JNIEnv(env), mainLoop_jobject(channel) {}
    void enter() override { mainLoop_JNIEnv->MonitorEnter(mainLoop_jobject); }
    void exit() override { mainLoop_JNIEnv->MonitorExit(mainLoop_jobject); }

private:
    JNIEnv* mainLoop_JNIEnv;
    jobject mainLoop_jobject;
};

// Holds the channel's monitor for one host-side queue access. The monitor is
// re-entrant: a host that already synchronises on the channel, as it is
// asked to, pays nothing, and one that forgets is still excluded.
class MonitorScope {
public:
    MonitorScope(JNIEnv* env, jobject channel) : env(env), channel(channel) { env->MonitorEnter(channel); }
    ~MonitorScope() { env->MonitorExit(channel); }
    MonitorScope(const MonitorScope&) = delete;
    MonitorScope& operator=(const MonitorScope&) = delete;

private:
    JNIEnv* env;
    jobject channel;
};

// False when another mainLoop is running: the engine and its queues exist
// once per process.
bool beginRun() {
    std::lock_guard<std::mutex> guard(run.lock);
    if (run.active)
        return false;
    run.active = true;
    run.stopRequested = false;
    return true;
}

void endRun() {
    std::lock_guard<std::mutex> guard(run.lock);
    run.active = false;
    run.stopRequested = false;
}

// False when breakMainLoop asked for the end while the engine was being set up.
bool publish(Sniffer* sniffer) {
    std::lock_guard<std::mutex> guard(run.lock);
    if (run.stopRequested)
        return false;
    run.sniffer = sniffer;
    return true;
}

void withdraw() {
    std::lock_guard<std::mutex> guard(run.lock);
    run.sniffer = nullptr;
}

// False, with the look-up's exception pending, when the field is missing;
// false when it holds null or its characters cannot be had.
bool readStringField(JNIEnv* env, jclass type, jobject channel, const char* name, std::string& value) {
    const jfieldID id = env->GetFieldID(type, name, "Ljava/lang/String;");
    if (!id)
        return false;
    auto text = static_cast<jstring>(env->GetObjectField(channel, id));
    if (!text) {
        LOG4CXX_ERROR(logger, "Host field " << name << " is null");
        return false;
    }
    const char* chars = env->GetStringUTFChars(text, nullptr);
    if (chars) {
        value = chars;
        env->ReleaseStringUTFChars(text, chars);
    }
    env->DeleteLocalRef(text);
    return chars != nullptr;
}

bool readHostFields(JNIEnv* env, jobject channel, HostSettings& settings) {
    const jclass type = env->GetObjectClass(channel);
    if (!readStringField(env, type, channel, "nicDevice", settings.devices) ||
        !readStringField(env, type, channel, "packetFilter", settings.filter))
        return false;
    const jfieldID count = env->GetFieldID(type, "packetCount", "I");
    if (!count)
        return false;
    settings.count = env->GetIntField(channel, count);
    const jfieldID trace = env->GetFieldID(type, "traceSignalling", "Z");
    if (!trace)
        return false;
    settings.traceSignalling = env->GetBooleanField(channel, trace) != JNI_FALSE;
    return true;
}

// Builds the engine, sets it up and sniffs until breakMainLoop. The engine is
// deleted on every path, a failed set-up included, so that a later mainLoop
// starts from a clean process.
void sniff(const HostSettings& settings) {
    auto sniffer = std::make_unique<Sniffer>();
    sniffer->setPromiscuous(1);
    sniffer->setCount(settings.count);
    sniffer->setFilter(settings.filter.c_str());
    sniffer->setTraceSignalling(settings.traceSignalling);
    sniffer->setEmbedded(true);
    // The host's fields are fixed; the opt-in settings come from the environment.
    if (sniffer->setDevice(settings.devices.c_str()) != 0 || !sniffer->loadOptions(EngineOptions::fromEnvironment) ||
        sniffer->setupSniffing() != 0) {
        std::cerr << "Errors in setup, terminating..." << std::endl;
        return;
    }
    if (!publish(sniffer.get()))
        return;
    Sniffer::installWakeSignal();
    sniffer->startSniffing();
    withdraw();
}

}  // namespace

JNIEXPORT void JNICALL Java_com_morvin_dom_telephony_sniffer_EmbeddedPacketChannel_mainLoop(JNIEnv* env,
                                                                                            jobject channel) {
    if (!beginRun()) {
        LOG4CXX_ERROR(logger, "mainLoop is already running: this call returns at once");
        return;
    }
    log4cxx::PropertyConfigurator::configure("./log4cxx.properties");
    HostSettings settings;
    if (readHostFields(env, channel, settings)) {
        ChannelMonitor monitor(env, channel);
        EmbeddedConnection::dft()->setMonitor(&monitor);
        sniff(settings);
        // Only now: deleting the engine closed the queues under the monitor.
        EmbeddedConnection::dft()->setMonitor(nullptr);
    }
    endRun();
}

JNIEXPORT void JNICALL Java_com_morvin_dom_telephony_sniffer_EmbeddedPacketChannel_breakMainLoop(JNIEnv*, jobject) {
    // Without a run there is nothing to stop; during set-up the stop is kept
    // for mainLoop to see before it starts sniffing.
    std::lock_guard<std::mutex> guard(run.lock);
    if (run.sniffer)
        run.sniffer->stopSniffing();
    else if (run.active)
        run.stopRequested = true;
}

JNIEXPORT jint JNICALL Java_com_morvin_dom_telephony_sniffer_EmbeddedPacketChannel_getPacket(JNIEnv* env,
                                                                                             jobject channel,
                                                                                             jbyteArray buffer) {
    if (!buffer)
        return 0;
    // The frame is taken into a buffer of this thread and only its own bytes
    // are copied into the array: an empty poll copies nothing, and a frame
    // longer than the array stays queued instead of overrunning it.
    thread_local std::vector<char> frame;
    const jsize capacity = env->GetArrayLength(buffer);
    if (frame.size() < static_cast<std::size_t>(capacity))
        frame.resize(capacity);
    int length;
    {
        MonitorScope hold(env, channel);
        length = EmbeddedConnection::dft()->receivePacket(frame.data(), capacity);
    }
    if (length > 0)
        env->SetByteArrayRegion(buffer, 0, length, reinterpret_cast<const jbyte*>(frame.data()));
    return length;
}

JNIEXPORT jint JNICALL Java_com_morvin_dom_telephony_sniffer_EmbeddedPacketChannel_sendRequest(JNIEnv* env,
                                                                                               jobject channel,
                                                                                               jbyteArray buffer) {
    // A command shorter than its wire form is refused whole rather than
    // decoded from bytes beyond the array.
    const jsize length = buffer ? env->GetArrayLength(buffer) : 0;
    if (length < SnifferRequest::wireLength)
        return 0;
    jbyte wire[SnifferRequest::wireLength];
    env->GetByteArrayRegion(buffer, 0, SnifferRequest::wireLength, wire);
    SnifferRequest request;
    request.decode(reinterpret_cast<const u_char*>(wire));
    bool queued;
    {
        MonitorScope hold(env, channel);
        queued = EmbeddedConnection::dft()->sendRequest(request);
    }
    return queued ? length : 0;
}
