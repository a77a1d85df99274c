// A Qt plug-in for the plug-in loading tests: its own class derives from a base of its own.
#include <QObject>
#include <QtPlugin>

class OrvelSampleBase : public QObject
{
    Q_OBJECT
};

class OrvelSamplePlugin : public OrvelSampleBase
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.orvel.SamplePlugin" FILE "SamplePlugin.json")
};

#include "SamplePlugin.moc"
