#include "voice/SoundServer.h"

#ifdef __linux__

#include <chrono>
#include <memory>
#include <pulse/pulseaudio.h>

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kPatience(2);

/// With a server that has not answered before.
constexpr std::chrono::milliseconds kLessPatience(50);

struct Closer {
    void operator()(pa_mainloop* loop) const { pa_mainloop_free(loop); }

    void operator()(pa_context* context) const
    {
        pa_context_disconnect(context);
        pa_context_unref(context);
    }
};

/// A connection that is made for the server's answer to it.
class Greeting {
public:
    Greeting()
        : loop_(pa_mainloop_new()), context_(pa_context_new(pa_mainloop_get_api(loop_.get()), ""))
    {
        // A server that does not run is started by those who want sound of it.
        pa_context_connect(context_.get(), nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr);
    }

    /// Whether there is still neither an answer nor a failure, after a time at most.
    bool isWaiting(Clock::duration patience)
    {
        waitWhile([this] { return hasNoAnswer(); }, patience);
        return hasNoAnswer();
    }

    /// Of a server that has answered: the source to record from, after a time at most. Empty where
    /// it does not tell.
    QByteArray defaultSource(Clock::duration patience)
    {
        QByteArray name;
        pa_operation* question = pa_context_get_server_info(context_.get(), takeSource, &name);
        if (!question)
            return {};
        waitWhile([&] { return pa_operation_get_state(question) == PA_OPERATION_RUNNING; },
                  patience);
        pa_operation_cancel(question);
        pa_operation_unref(question);
        return name;
    }

private:
    static void takeSource(pa_context* /*context*/, const pa_server_info* info, void* name)
    {
        if (info)
            *static_cast<QByteArray*>(name) = info->default_source_name;
    }

    template <typename Condition>
    void waitWhile(Condition holds, Clock::duration patience)
    {
        const Clock::time_point end = Clock::now() + patience;
        for (auto left = patience; holds() && left > left.zero(); left = end - Clock::now()) {
            const auto wait = std::chrono::ceil<std::chrono::microseconds>(left);
            pa_mainloop_prepare(loop_.get(), static_cast<int>(wait.count()));
            pa_mainloop_poll(loop_.get());
            pa_mainloop_dispatch(loop_.get());
        }
    }

    bool hasNoAnswer() const
    {
        const pa_context_state_t state = pa_context_get_state(context_.get());
        return PA_CONTEXT_IS_GOOD(state) && state != PA_CONTEXT_READY;
    }

    std::unique_ptr<pa_mainloop, Closer> loop_;
    std::unique_ptr<pa_context, Closer> context_;
};

} // namespace

bool SoundServer::answers()
{
    static std::unique_ptr<Greeting> unanswered;
    if (unanswered && unanswered->isWaiting(kLessPatience))
        return false;
    unanswered.reset();
    auto greeting = std::make_unique<Greeting>();
    if (!greeting->isWaiting(kPatience))
        return true;
    unanswered = std::move(greeting);
    return false;
}

QByteArray SoundServer::defaultMicrophone()
{
    Greeting greeting;
    return greeting.isWaiting(kPatience) ? QByteArray() : greeting.defaultSource(kPatience);
}

#else

bool SoundServer::answers()
{
    return true;
}

QByteArray SoundServer::defaultMicrophone()
{
    return {};
}

#endif
