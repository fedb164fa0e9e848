#include "dicom/ToolkitMessages.h"

#include <dcmtk/config/osconfig.h>

#include <dcmtk/oflog/appender.h>
#include <dcmtk/oflog/logger.h>
#include <dcmtk/oflog/oflog.h>
#include <dcmtk/oflog/spi/logevent.h>

namespace kivds {
namespace {

class ListenerAppender final : public dcmtk::log4cplus::Appender
{
public:
    using Listener = void (*)(void* context, const char* message);

    ListenerAppender(Listener listener, void* context) : m_pListener(listener), m_pContext(context) {}
    ~ListenerAppender() override { destructorImpl(); }
    void close() override { closed = true; }

protected:
    void append(const dcmtk::log4cplus::spi::InternalLoggingEvent& event) override
    {
        m_pListener(m_pContext, event.getMessage().c_str());
    }

private:
    const Listener m_pListener;
    void* const m_pContext;
};

} // namespace

void SetToolkitListener(void (*listener)(void* context, const char* message), void* context)
{
    OFLog::configure(listener ? OFLogger::WARN_LOG_LEVEL : OFLogger::OFF_LOG_LEVEL);
    dcmtk::log4cplus::Logger root = dcmtk::log4cplus::Logger::getRoot();
    root.removeAllAppenders();
    if (listener)
        root.addAppender(dcmtk::log4cplus::SharedAppenderPtr(new ListenerAppender(listener, context)));
}

} // namespace kivds
