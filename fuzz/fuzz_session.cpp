// SPDX-License-Identifier: MIT
// A whole Morse session with files. The input is a script of one character an operation (see
// Session::step), and the same script moves a plain model, whose text, files and documents have to
// be those of the handler.
#include "fuzz/fuzzing.h"
#include "host/datetime.h"
#include "host/standin/resultreader.h"
#include "morse/morsetranslator.h"
#include "morse/symbolcodes.h"
#include "support/morsefixture.h"

#include <list>
#include <utility>

using fuzzing::require;

namespace {

constexpr int MOST_SYMBOLS = 4000;
constexpr unsigned long long NO_TIME = ~0ULL;

/// One of the two kinds of session files: what each of them holds.
struct Files
{
    QStringList contents;
    bool isOpen = false;
    bool isNamed = false; ///< a name is prepared in a folder that is there
    int column = 0;

    void write(const QString& piece, bool hasFolder)
    {
        if (piece.isEmpty() || (!isOpen && !isNamed && !hasFolder))
            return;
        if (!isOpen) {
            contents += QString();
            column = 0;
        }
        isOpen = true;
        contents.last() += piece;
        if (column >= 100) {
            contents.last() += '\n';
            column = 0;
        }
        column += piece.size();
    }
};

struct Frame
{
    unsigned long long time_us;
    QString text;
};

/// The handler as one would explain it to a colleague.
class Model
{
public:
    void add(int code)
    {
        m_waiting.push_back(code);
        if (!isAvailable || !isActive)
            return;
        const int oldest = m_waiting.front() & MORSE_SYMBOL_MASK;
        m_waiting.pop_front();
        switch (oldest) {
        case eSYMBOL_DOT:
        case eSYMBOL_DASH:
            symbols += oldest == eSYMBOL_DOT ? '.' : '-';
            m_character += oldest == eSYMBOL_DOT ? '.' : '-';
            save(symbols.right(1), {});
            break;
        case eSYMBOL_NEW_CHAR:
            endCharacter();
            break;
        case eSYMBOL_NEW_WORD:
            endWord();
            break;
        case eSYMBOL_NEW_LINE:
            if (!m_character.isEmpty())
                endCharacter();
            endLine();
            break;
        case eSYMBOL_DOT_TOO_SHORT:
            m_marks += "[DOT_TOO_SHORT]";
            break;
        case eSYMBOL_DASH_TOO_LONG:
            m_marks += "[DASH_TOO_LONG]";
            break;
        case eSYMBOL_PAUSE_TOO_SHORT:
            m_marks += "[PAUSE_TOO_SHORT]";
            break;
        default:
            break;
        }
    }

    void setTime(unsigned long long time_us)
    {
        m_previous_us = std::exchange(m_current_us, time_us);
        // A document lies in the folder of the time stamp that opens it.
        if (!isTransmitting)
            m_isDocumentLost = !hasFolder;
        isTransmitting = true;
        m_frameTime_us = time_us;
    }

    void saveDocument()
    {
        const QVector<Frame> frames = std::exchange(m_unsaved, {});
        if (!m_isDocumentLost)
            saved += frames;
        isTransmitting = false;
    }

    void closeFiles()
    {
        for (Files* const files : {&textFiles, &codeFiles})
            files->isOpen = files->isNamed = false;
    }

    void restartFiles()
    {
        closeFiles();
        textFiles.isNamed = codeFiles.isNamed = hasFolder;
    }

    void end()
    {
        isAvailable = false;
        isActive = false;
        symbols.clear();
        m_character.clear();
        m_marks.clear();
        m_isBehindDigit = false;
        closeFiles();
    }

    MorseTranslator translator;
    bool isAvailable = true;
    bool isActive = false;
    bool isSaving = false;
    bool hasFolder = true;
    bool isTransmitting = false;
    QString symbols;
    QStringList published;
    Files textFiles;
    Files codeFiles;
    QVector<Frame> saved;

private:
    void endCharacter()
    {
        symbols += 'c';
        QString text = translator.DecodeMorse(m_character);
        if (m_isBehindDigit && m_character == "-")
            text = "0";
        m_isBehindDigit = text.size() == 1 && text[0] >= '0' && text[0] <= '9';
        if (!text.isEmpty())
            addFrame(text);
        published += text;
        const QString marks = std::exchange(m_marks, QString());
        save(marks + ' ', text + marks);
        m_character.clear();
    }

    void endWord()
    {
        symbols += 'w';
        const QString text = translator.DecodeMorse(m_character) + ' ';
        addFrame(text);
        published += text;
        const QString marks = std::exchange(m_marks, QString());
        save(marks, text + marks);
        m_character.clear();
    }

    void endLine()
    {
        if (m_previous_us != NO_TIME && m_current_us != NO_TIME) {
            symbols += '\n';
            // Equal to what is there, so nobody is notified.
            if (published.isEmpty() || published.last() != "\n")
                published += "\n";
            const QString marks = std::exchange(m_marks, QString());
            save(marks, "\n[Stop Time:  " + clock(m_previous_us) +
                            "]\n[Start Time:  " + clock(m_current_us) + "]\n");
            m_character.clear();
            m_isBehindDigit = false;
        }
        addFrame("\n");
    }

    static QString clock(unsigned long long time_us)
    {
        Vanth::DateTime time;
        time.setFormatString("hh:mm:ss.zzz");
        time.setOffsetFromUTC(Vanth::DateTime::Local_TimeZone);
        time.setTime_ts(time_us);
        return time.toString();
    }

    void save(const QString& code, const QString& text)
    {
        if (!isSaving)
            return;
        textFiles.write(text, hasFolder);
        codeFiles.write(code, hasFolder);
    }

    void addFrame(const QString& text)
    {
        if (isTransmitting)
            m_unsaved += {m_frameTime_us, text};
    }

    std::list<int> m_waiting;
    QString m_character;
    QString m_marks;
    bool m_isBehindDigit = false;
    bool m_isDocumentLost = false;
    unsigned long long m_previous_us = NO_TIME;
    unsigned long long m_current_us = NO_TIME;
    unsigned long long m_frameTime_us = 0;
    QVector<Frame> m_unsaved;
};

constexpr const char* ALPHABETS[] = {"International", "Hebrew", "Japanese", "missing"};

class Session
{
public:
    explicit Session(const fuzzing::Folder& folder)
        : m_folder(folder)
        , m_published(m_host->text)
        , m_textNames(m_host->textFileName)
        , m_codeNames(m_host->codeFileName)
        , m_documentNames(m_host->xmlFileName)
    {
        MorseHandler& handler = m_host->handler;
        m_host->wireFiles(folder.path());
        for (const char* name : ALPHABETS)
            m_host->alphabet->AddItems({name}, nullptr);
        m_host->alphabetDirectory->SetValue(PROJECT_DATA_DIR "/alphabets", nullptr);
        handler.SetMorseAlphabet_ValuePath(MorseValues::path("Alphabet"));
        handler.SetMorseAlphabet_DirectoryPath(MorseValues::path("AlphabetDirectory"));
        handler.SetTextDirectionRTL_ValuePath(MorseValues::path("RightToLeft"));
        handler.SetFrequency_ValuePath(MorseValues::path("Frequency"));
        handler.SetModtype_ValuePath(MorseValues::path("Modulation"));
        handler.SetDecResult_ValuePath(MorseValues::path("DecoderResult"));
        setAlphabet(0);
        start();
    }

    void step(fuzzing::Bytes& bytes)
    {
        MorseHandler& handler = m_host->handler;
        const std::uint8_t operation = bytes.byte();
        switch (operation) {
        case '.':
        case '-':
        case 'c':
        case 'w':
        case 'n':
        case 'd':
        case 'l':
        case 'p':
            send(MorseFixture::codeOf(static_cast<char>(operation)));
            break;
        case '*': // the last code again, up to 255 times
            for (int i = bytes.byte(); i > 0; --i)
                send(m_lastCode);
            break;
        case '!': { // any code, past the value
            const int code = static_cast<int>(bytes.number(2));
            m_model.add(code);
            handler.AddSymbol(code);
            break;
        }
        case 'T': // time goes on
            setTime(m_time_us += 12345678ULL * bytes.byte());
            break;
        case 't': // any time
            setTime(bytes.number(8));
            break;
        case 'S':
            start();
            break;
        case 'E':
            m_model.end();
            handler.EndMorseSession();
            break;
        case 'A': // an alphabet
            setAlphabet(bytes.byte() % 4);
            m_model.translator.SetMorseAlphabet(alphabetPath());
            require(handler.ChangeAlphabet() == QFile::exists(alphabetPath()),
                    "an alphabet is loaded when there is one");
            require(m_host->rightToLeft->GetValue() == m_model.translator.isTextDirectionRTL(),
                    "the direction is published");
            break;
        case 'a':
            setAvailable(bytes.byte() % 2 != 0);
            break;
        case 'F': // saving
            setSaving(bytes.byte() % 2 != 0);
            break;
        case 'D': // a folder, which may be missing
            m_model.hasFolder = bytes.byte() % 2 != 0;
            handler.SetSaveDirectoryPath(
                m_model.hasFolder ? m_folder.path() : QStringLiteral("/no/such/folder"),
                MorseValues::path("TextFileName"), MorseValues::path("CodeFileName"),
                MorseValues::path("XmlFileName"));
            break;
        case 'X':
            m_model.saveDocument();
            m_host->saveDocument->HasChanged(eCHANGE_FORCED, nullptr);
            break;
        case 'Q': // a frequency
            setFrequency(static_cast<double>(bytes.number(4)));
            break;
        case 'C':
            m_model.symbols.clear();
            handler.ClearSymbolBuffer();
            break;
        case 'P': { // part of the text
            const int count = bytes.byte();
            require(handler.TranslateText(true, true, count).size() <= 16 * m_model.symbols.size(),
                    "a part of the text grows with the symbols");
            break;
        }
        default:
            break;
        }
    }

    bool isLong() const { return m_symbols > MOST_SYMBOLS; }

    void check()
    {
        MorseHandler& handler = m_host->handler;
        require(m_published.texts == m_model.published, "every code gives its text");
        require(handler.GetCurrentMorseSymbolString() == m_model.symbols,
                "the symbols are kept in order");
        const QString text = handler.TranslateText(false, false, 0);
        require(text == m_model.translator.Translate(m_model.symbols),
                "the symbols are translated again by the present alphabet");

        const QStringList textNames = m_textNames.texts;
        const QStringList codeNames = m_codeNames.texts;
        QStringList documents = m_documentNames.texts;
        m_host.reset(); // closes the files
        require(contents(textNames) == m_model.textFiles.contents,
                "what is decoded while saving is in the text files");
        require(contents(codeNames) == m_model.codeFiles.contents,
                "what is received while saving is in the code files");
        documents.removeDuplicates();
        checkDocuments(documents);
        require(m_folder.names().size() <= textNames.size() + codeNames.size() + documents.size(),
                "no other file is left behind");
    }

private:
    void send(int code)
    {
        ++m_symbols;
        m_lastCode = code;
        m_model.add(code);
        m_host->send(code);
    }

    void start()
    {
        m_model.translator.SetMorseAlphabet(alphabetPath());
        m_model.isAvailable = m_host->available->GetValue();
        m_model.isActive = true;
        require(m_host->handler.StartNewMorseSession() == QFile::exists(alphabetPath()),
                "a session starts with its alphabet when there is one");
    }

    void setTime(unsigned long long time_us)
    {
        m_model.setTime(time_us);
        m_host->handler.SetTimestamp(time_us);
    }

    void setAlphabet(int index) { m_host->alphabet->Select(QString(ALPHABETS[index]), nullptr); }

    QString alphabetPath() const
    {
        return QString(PROJECT_DATA_DIR "/alphabets/") + m_host->alphabet->GetStringValue() +
               ".mal";
    }

    void setAvailable(bool available)
    {
        if (m_host->available->GetValue() != available)
            m_model.isAvailable = available;
        m_host->available->SetValue(available, nullptr);
    }

    void setSaving(bool saving)
    {
        if (!saving)
            m_model.closeFiles();
        m_model.isSaving = saving;
        m_host->saveToFile->SetValue(saving, nullptr);
    }

    void setFrequency(double frequency_Hz)
    {
        if (m_host->frequency->GetValue() != frequency_Hz && m_model.isSaving)
            m_model.restartFiles();
        m_host->frequency->SetValue(frequency_Hz, nullptr);
    }

    QStringList contents(const QStringList& names) const
    {
        QStringList all;
        for (const QString& name : names)
            all += QString::fromUtf8(m_folder.read(name));
        return all;
    }

    void checkDocuments(const QStringList& names) const
    {
        QVector<Frame> frames;
        for (const QString& name : names) {
            QFile file(name);
            // A transmission that was never saved leaves none.
            if (!file.open(QIODevice::ReadOnly))
                continue;
            const auto document = TavikResultDataXml::readResultDocument(file);
            require(document.has_value(), "a document can be read");
            for (const auto& transmission : document->transmissions) {
                for (const auto& block : transmission.blocks) {
                    for (const auto& frame : block.frames)
                        frames += {frame.timestamp_us, frame.text};
                }
            }
        }
        require(std::equal(frames.begin(), frames.end(), m_model.saved.begin(), m_model.saved.end(),
                           [](const Frame& a, const Frame& b) {
                               return a.time_us == b.time_us && a.text == b.text;
                           }),
                "what is decoded in a transmission is in its document");
    }

    const fuzzing::Folder& m_folder;
    std::unique_ptr<MorseFixture> m_host = std::make_unique<MorseFixture>();
    TextLog m_published;
    TextLog m_textNames;
    TextLog m_codeNames;
    TextLog m_documentNames;
    Model m_model;
    int m_lastCode = 0;
    int m_symbols = 0;
    unsigned long long m_time_us = 1494584100000000ULL;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const fuzzing::Folder folder;
    folder.empty();
    fuzzing::Bytes bytes(data, size);
    Session session(folder);
    while (!bytes.isEmpty() && !session.isLong())
        session.step(bytes);
    session.check();
    return 0;
}
