// GraphicsContext: the current drawing destination (a QPainter) with its interpolation and antialiasing.
#pragma once

#include <QPainter>

namespace orvel {

/// Compositing operations, with the platform's codes (2 is source-over).
enum class CompositingOperation {
    Clear = 0,
    Copy = 1,
    SourceOver = 2,
    SourceIn = 3,
    SourceOut = 4,
    SourceAtop = 5,
    DestinationOver = 6,
    DestinationIn = 7,
    DestinationOut = 8,
    DestinationAtop = 9,
    XOR = 10,
    PlusDarker = 11,
    Highlight = 12,
    PlusLighter = 13,
};

/// The QPainter composition mode of an operation code; source-over for unknown codes.
QPainter::CompositionMode compositionModeFor(CompositingOperation op);

/// Image interpolation codes: 0 default, 1 none, 2 low, 3 high. The default is high.
enum ImageInterpolation {
    InterpolationDefault = 0,
    InterpolationNone = 1,
    InterpolationLow = 2,
    InterpolationHigh = 3
};

/// A drawing destination. Drawing operations draw into the current context of their thread;
/// contexts are made current with makeCurrent() or a Scope, and restored like a stack.
class GraphicsContext
{
public:
    explicit GraphicsContext(QPainter *painter, bool drawsToScreen = false);
    ~GraphicsContext();
    GraphicsContext(const GraphicsContext &) = delete;
    GraphicsContext &operator=(const GraphicsContext &) = delete;

    /// The current context of this thread, or null.
    static GraphicsContext *current();
    static void setCurrent(GraphicsContext *context);
    /// Saves the current context and its painter state; restoreGraphicsState() brings both back.
    static void saveGraphicsState();
    static void restoreGraphicsState();

    QPainter *painter() const { return m_painter; }
    int imageInterpolation() const { return m_interpolation; }
    void setImageInterpolation(int interpolation);
    bool shouldAntialias() const { return m_antialias; }
    void setShouldAntialias(bool antialias);
    bool isDrawingToScreen() const { return m_screen; }

    /// Makes a context current for the lifetime of the scope, saving and restoring the graphics state.
    class Scope
    {
    public:
        explicit Scope(GraphicsContext &context);
        ~Scope();
        Scope(const Scope &) = delete;
        Scope &operator=(const Scope &) = delete;
    };

private:
    QPainter *m_painter;
    int m_interpolation = InterpolationDefault;
    bool m_antialias = true;
    bool m_screen;
};

} // namespace orvel
