// SPDX-License-Identifier: MIT
// A host that implements the contract itself: its own tree, traces, configuration and result
// documents. Values and dates are those of the stand-in, whose source files are compiled in; each
// of them implements one header, so any of them can be replaced in the same way.
#include "morsehandler/host/cfgcenter.h"
#include "morsehandler/host/ivtclient.h"
#include "morsehandler/host/resultdata.h"
#include "morsehandler/host/trace.h"
#include "morsehandler/host/tree.h"
#include "morsehandler/host/values.h"
#include "morsehandler/session/morsehandler.h"

#include <QHash>

#include <cstdarg>
#include <cstdio>

// host/tree.h

namespace {

class OwnTree : public Tree
{
public:
    OwnTree() { s_instance = this; }

    ~OwnTree() override
    {
        // Each value announces its deletion and takes itself out.
        while (!m_values.isEmpty())
            delete m_values.begin().value();
        s_instance = nullptr;
    }

    ValueBase* Find(const QString& path) override { return m_values.value(path); }

    bool Insert(const QString& parentPath, ValueBase* value) override
    {
        const bool isParent = parentPath.isEmpty() || parentPath.endsWith(QLatin1Char('/'));
        if (!isParent || !value || TreeOf(value) || value->GetName().isEmpty())
            return false;
        const QString path = parentPath + value->GetName();
        if (m_values.contains(path))
            return false;
        m_values.insert(path, value);
        Enter(value, this, path);
        return true;
    }

    static OwnTree* s_instance;

protected:
    void Remove(ValueBase* value) override
    {
        m_values.remove(PathOf(value));
        Enter(value, nullptr, QString());
    }

private:
    QHash<QString, ValueBase*> m_values;
};

OwnTree* OwnTree::s_instance = nullptr;

} // namespace

Tree::~Tree() = default;

Tree* Tree::Instance()
{
    return OwnTree::s_instance;
}

void Tree::Enter(ValueBase* value, Tree* tree, const QString& path)
{
    value->m_tree = tree;
    value->m_path = path;
}

QString Tree::PathOf(const ValueBase* value)
{
    return value->m_path;
}

Tree* Tree::TreeOf(const ValueBase* value)
{
    return value->m_tree;
}

bool Tree::IsDeleted(const ValueBase* value)
{
    return value->m_isDeleted;
}

// host/trace.h

namespace {

class OwnErrorHandler : public ErrorHandler
{
public:
    unsigned int GetTraceMask() override { return PLUGIN_TRACE_CLASS; }
};

} // namespace

ErrorHandler::~ErrorHandler() = default;

ErrorHandler& ErrorHandler::Instance()
{
    static OwnErrorHandler handler;
    return handler;
}

void _Q_Trace(const QString& message, const QString& sourceFile, unsigned short line)
{
    std::printf("trace: %s (%s, %d)\n", qPrintable(message), qPrintable(sourceFile), line);
}

void _Q_TraceOld(QString format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    std::printf("trace: %s\n", qPrintable(QString::vasprintf(qPrintable(format), arguments)));
    va_end(arguments);
}

// host/cfgcenter.h, host/ivtclient.h

ICfg::~ICfg() = default;

ICfg* CfgCenter::CreateCfg(QString, ICfg::View, QString)
{
    return nullptr; // no decoder modules here
}

IVtClient::~IVtClient() = default;

// host/resultdata.h: documents that are not kept, but shown frame by frame

namespace TavikResultDataXml {

struct BlockContent
{
    unsigned long long timestamp_us = 0;
    QString text;
};

struct TransmissionContent
{
};

DataBlock::DataBlock(int, int, int)
    : m_content(std::make_shared<BlockContent>())
{
}

DataBlock::~DataBlock() = default;

void DataBlock::BeginFrame()
{
    *m_content = BlockContent();
}

void DataBlock::SetTimeStamp(unsigned long long timestamp_us)
{
    m_content->timestamp_us = timestamp_us;
}

void DataBlock::AppendData(const QString& text)
{
    m_content->text += text;
}

void DataBlock::EndFrame()
{
    std::printf("%llu us: %s\n", m_content->timestamp_us, qPrintable(m_content->text));
}

Transmission::Transmission() = default;
Transmission::~Transmission() = default;
void Transmission::SetStartTime(const QDateTime&) {}
void Transmission::SetStopTime(const QDateTime&) {}

void Transmission::AddDataBlock(DataBlock* block)
{
    m_blocks.emplace_back(block);
}

class TavikResultData::Impl
{
public:
    std::vector<std::unique_ptr<Transmission>> transmissions;
};

TavikResultData::TavikResultData()
    : m_impl(std::make_unique<Impl>())
{
}

TavikResultData::~TavikResultData() = default;
void TavikResultData::SetWorkDir(const QString&) {}

void TavikResultData::AddTransmission(Transmission* transmission)
{
    m_impl->transmissions.emplace_back(transmission);
}

bool TavikResultData::SaveFile(const QString&)
{
    return true;
}

void TavikResultData::Reset()
{
    m_impl->transmissions.clear();
}

} // namespace TavikResultDataXml

namespace {

template <typename Kind>
Kind* add(Tree& tree, const QString& name)
{
    auto* const value = new Kind;
    value->SetName(name, nullptr);
    tree.Insert(QString(), value);
    return value;
}

} // namespace

int main()
{
    OwnTree tree;
    auto* const symbol = add<IntegerValue>(tree, QStringLiteral("Symbol"));
    add<FlagValue>(tree, QStringLiteral("Available"))->SetValue(true, nullptr);

    MorseHandler handler;
    handler.SetSymbol_ValuePath(QStringLiteral("Symbol"));
    handler.SetMorseAvailable_ValuePath(QStringLiteral("Available"));
    handler.StartNewMorseSession();
    unsigned long long time_us = 0;
    for (const int code : {0, 0, 0, 3, 1, 1, 1, 3, 0, 0, 0, 3}) {
        handler.SetTimestamp(time_us += 60000);
        handler.AddSymbol(code);
    }
    // The library answers this with a trace.
    symbol->HasChanged(eCHANGE_FORCED, nullptr);
    return 0;
}
