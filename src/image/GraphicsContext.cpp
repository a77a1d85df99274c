// GraphicsContext: the per-thread current drawing destination and its saved states.
#include "image/GraphicsContext.h"

#include <vector>

namespace orvel {

namespace {
thread_local GraphicsContext *currentContext = nullptr;
thread_local std::vector<GraphicsContext *> savedContexts;
} // namespace

QPainter::CompositionMode compositionModeFor(CompositingOperation op)
{
    switch (op) {
    case CompositingOperation::Clear:
        return QPainter::CompositionMode_Clear;
    case CompositingOperation::Copy:
        return QPainter::CompositionMode_Source;
    case CompositingOperation::SourceOver:
        return QPainter::CompositionMode_SourceOver;
    case CompositingOperation::SourceIn:
        return QPainter::CompositionMode_SourceIn;
    case CompositingOperation::SourceOut:
        return QPainter::CompositionMode_SourceOut;
    case CompositingOperation::SourceAtop:
        return QPainter::CompositionMode_SourceAtop;
    case CompositingOperation::DestinationOver:
        return QPainter::CompositionMode_DestinationOver;
    case CompositingOperation::DestinationIn:
        return QPainter::CompositionMode_DestinationIn;
    case CompositingOperation::DestinationOut:
        return QPainter::CompositionMode_DestinationOut;
    case CompositingOperation::DestinationAtop:
        return QPainter::CompositionMode_DestinationAtop;
    case CompositingOperation::XOR:
        return QPainter::CompositionMode_Xor;
    case CompositingOperation::PlusDarker:
        return QPainter::CompositionMode_Darken;
    case CompositingOperation::Highlight:
        return QPainter::CompositionMode_SourceOver;
    case CompositingOperation::PlusLighter:
        return QPainter::CompositionMode_Plus;
    }
    return QPainter::CompositionMode_SourceOver;
}

GraphicsContext::GraphicsContext(QPainter *painter, bool drawsToScreen)
    : m_painter(painter)
    , m_screen(drawsToScreen)
{
    if (m_painter)
        m_painter->setRenderHint(QPainter::Antialiasing, m_antialias);
}

GraphicsContext::~GraphicsContext()
{
    if (currentContext == this)
        currentContext = nullptr;
}

GraphicsContext *GraphicsContext::current() { return currentContext; }

void GraphicsContext::setCurrent(GraphicsContext *context) { currentContext = context; }

void GraphicsContext::saveGraphicsState()
{
    savedContexts.push_back(currentContext);
    if (currentContext && currentContext->m_painter)
        currentContext->m_painter->save();
}

void GraphicsContext::restoreGraphicsState()
{
    if (savedContexts.empty())
        return;
    GraphicsContext *saved = savedContexts.back();
    savedContexts.pop_back();
    if (saved && saved->m_painter && saved->m_painter->isActive())
        saved->m_painter->restore();
    currentContext = saved;
}

void GraphicsContext::setImageInterpolation(int interpolation)
{
    m_interpolation = interpolation;
    if (m_painter)
        m_painter->setRenderHint(QPainter::SmoothPixmapTransform, interpolation != InterpolationNone);
}

void GraphicsContext::setShouldAntialias(bool antialias)
{
    m_antialias = antialias;
    if (m_painter)
        m_painter->setRenderHint(QPainter::Antialiasing, antialias);
}

GraphicsContext::Scope::Scope(GraphicsContext &context)
{
    saveGraphicsState();
    setCurrent(&context);
}

GraphicsContext::Scope::~Scope() { restoreGraphicsState(); }

} // namespace orvel
