#include "copy/Reposicao.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>

#include "copy/ColunasDaCopia.h"
#include "dialect/Dialeto.h"
#include "packet/Codigos.h"
#include "tables/MarcaDaBackup.h"
#include "values/Json.h"
#include "values/SomaDeValores.h"
#include "values/Texto.h"
#include "values/TextoDeData.h"

namespace wkd {

namespace {

using TJson = nlohmann::ordered_json;

/// A number with a fraction stays as it is written: a decimal may have more digits than a double.
class TLeitor : public nlohmann::detail::json_sax_dom_parser<TJson> {
  public:
    using json_sax_dom_parser::json_sax_dom_parser;
    bool number_float(double, const std::string& escrito) {
        std::string texto = escrito;
        return string(texto);
    }
};

TJson Le(const std::string& linha) {
    TJson json;
    TLeitor leitor(json, false);
    return TJson::sax_parse(linha, &leitor) ? json : TJson();
}

/// The name of a line in the marks.
std::string Nome(const std::string& linha) {
    THash hash;
    hash.Soma(std::string_view(linha));
    return std::to_string(hash.Valor());
}

struct TMarca {
    std::string estado, motivo;
};

bool DoAlias(const TJson& json, const std::string& alias) {
    return IgualSemCaixa(Apara(json.value("alias", "")), Apara(alias));
}

class TEntradaDeLinhas {
  public:
    explicit TEntradaDeLinhas(const std::filesystem::path& arquivo) : aberto_(AbreParaLer(arquivo)) {}

    bool Proxima(std::string& linha) {
        linha.clear();
        for (char pedaco[1 << 14]; std::fgets(pedaco, sizeof pedaco, aberto_.get());) {
            linha += pedaco;
            if (!linha.ends_with('\n')) continue;
            linha.pop_back();
            return true;
        }
        return !linha.empty();
    }

    TArquivo aberto_;
};

/// The file, line by line. Equal lines share their marks: they are one row.
class TArquivoLido {
  public:
    explicit TArquivoLido(const std::filesystem::path& arquivo) : arquivo_(arquivo) {
        CadaLinha([&](const std::string&, const TJson& json) {
            if (json.contains("marca"))
                marcas_[json.value("linha", "")] = {json.value("marca", ""), json.value("motivo", "")};
        });
    }

    template <class F>
    void CadaLinha(F&& usa) const {
        std::error_code semErro;
        if (!std::filesystem::exists(arquivo_, semErro)) return;
        TEntradaDeLinhas entrada(arquivo_);
        for (std::string linha; entrada.Proxima(linha);)
            if (const TJson json = Le(linha); json.is_object()) usa(linha, json);
    }

    /// Whole rows of the alias that are not back. A line equal to one before goes to `repetida`.
    template <class F, class G>
    void CadaAberta(const std::string& alias, F&& usa, G&& repetida) const {
        std::set<std::string> vistas;
        CadaLinha([&](const std::string& linha, const TJson& json) {
            if (!json.contains("valores") || !DoAlias(json, alias)) return;
            const std::string nome = Nome(linha);
            if (!vistas.insert(nome).second) return repetida(json);
            const auto marca = marcas_.find(nome);
            const bool feita = marca != marcas_.end() && marca->second.estado == "reposta";
            if (!feita) usa(nome, json, marca == marcas_.end() ? TMarca() : marca->second);
        });
    }

  private:
    std::filesystem::path arquivo_;
    std::map<std::string, TMarca> marcas_;
};

TValor ValorDe(const TJson& json) {
    if (json.is_boolean()) return json.get<bool>();
    if (json.is_number_integer()) return json.get<std::int64_t>();
    if (json.is_string()) return json.get<std::string>();
    if (!json.is_object() || !json.contains("base64")) return {};
    const auto escrito = json.at("base64").get<std::string>();
    TBytes bytes;
    DeBase64(escrito, bytes.bytes, escrito.size());
    return bytes;
}

class TReposicaoDeLinhas {
  public:
    TReposicaoDeLinhas(TConnection& conexao, const std::filesystem::path& pasta, const std::string& alias)
        : conexao_(conexao), arquivo_(ArquivoDeRejeitados(pasta)), alias_(alias), lido_(arquivo_) {}

    TReposicao Executa() {
        lido_.CadaLinha([&](const std::string&, const TJson& json) {
            reposicao_.antigas += json.contains("valores") && !json.contains("alias");
            reposicao_.valores += json.contains("campo") && DoAlias(json, alias_);
        });
        lido_.CadaAberta(
            alias_, [&](const auto& nome, const TJson& json, const TMarca& marca) { Linha(nome, json, marca); },
            [&](const TJson& json) { reposicao_.iguais += SemChave(json.value("tabela", "")); });
        return std::move(reposicao_);
    }

  private:
    using TParesDeColuna = std::vector<std::pair<TColunaFisica, TValor>>;
    /// Rows of the table that are equal, and whether there are others with the same key.
    struct TPresenca {
        std::int64_t iguais = 0;
        bool outras = false;
    };

    void Linha(const std::string& nome, const TJson& json, const TMarca& marca);
    bool SemChave(const std::string& tabela) { return conexao_.ChavePrimaria(tabela).colunas.empty(); }
    TParesDeColuna Colunas(const std::string& tabela, const TJson& valores);
    TPresenca Presenca(const std::string& tabela, const TParesDeColuna& pares);
    /// Whether the row is back already, as far as a mark of an interrupted work tells of a table without key: that says
    /// how many equal rows there were before.
    bool JaEsta(const std::string& tabela, const TPresenca& presenca, const TMarca& marca);
    bool Igual(TComando& linha, const TParesDeColuna& pares);
    void Insere(const std::string& tabela, const TParesDeColuna& pares);
    void Marca(const std::string& nome, std::string_view estado, std::string_view motivo);

    TConnection& conexao_;
    std::filesystem::path arquivo_;
    std::string alias_;
    TArquivoLido lido_;
    TReposicao reposicao_;
};

void TReposicaoDeLinhas::Linha(const std::string& nome, const TJson& json, const TMarca& marca) {
    const std::string tabela = json.value("tabela", "");
    std::string motivo;
    bool comecada = false;
    try {
        if (!NomeDeSql(tabela) || !conexao_.ExisteTabela(tabela)) throw std::runtime_error("a tabela não existe");
        const auto pares = Colunas(tabela, json.at("valores"));
        const TPresenca presenca = Presenca(tabela, pares);
        if (JaEsta(tabela, presenca, marca)) {
            ++reposicao_.presentes;
            return Marca(nome, "reposta", "já estava na tabela");
        }
        if (presenca.outras) throw std::runtime_error("a tabela tem outro registro com a mesma chave");
        comecada = SemChave(tabela);  // a key tells by itself whether the row is there
        if (comecada) Marca(nome, "repondo", std::to_string(presenca.iguais));
        Insere(tabela, pares);
        ++reposicao_.repostas;
        return Marca(nome, "reposta", "");
    } catch (const TErroBanco& erro) {
        if (erro.ConexaoPerdida()) throw;
        motivo = erro.what();
    } catch (const std::system_error&) {
        throw;
    } catch (const std::exception& erro) {
        motivo = erro.what();
    }
    if (comecada || marca.motivo != motivo || marca.estado != "ficou") Marca(nome, "ficou", motivo);
    const TJson chave = json.value("chave", TJson::object());
    reposicao_.ficam.push_back({tabela, (chave.empty() ? json.at("valores") : chave).dump(), motivo});
}

/// Values that the table has a column for; one that it has none for may not get lost.
TReposicaoDeLinhas::TParesDeColuna TReposicaoDeLinhas::Colunas(const std::string& tabela, const TJson& valores) {
    const auto fisicas = conexao_.Colunas(tabela);
    TParesDeColuna pares;
    for (const auto& [campo, escrito] : valores.items()) {
        const TValor valor = ValorDe(escrito);
        const TColunaFisica* coluna = ColunaDeNome(fisicas, campo);
        if (!coluna && !valor.Nulo()) throw std::runtime_error("a tabela não tem a coluna " + campo);
        if (coluna && coluna->expressao.empty()) pares.emplace_back(*coluna, ConverteParaColuna(valor, *coluna));
    }
    if (pares.empty()) throw std::runtime_error("o registro não tem nenhuma coluna da tabela");
    return pares;
}

bool TReposicaoDeLinhas::JaEsta(const std::string& tabela, const TPresenca& presenca, const TMarca& marca) {
    if (!SemChave(tabela)) return presenca.iguais > 0;
    return marca.estado == "repondo" && presenca.iguais > std::atoll(marca.motivo.c_str());
}

/// By the primary key; without one, by all that can be compared.
TReposicaoDeLinhas::TPresenca TReposicaoDeLinhas::Presenca(const std::string& tabela, const TParesDeColuna& pares) {
    const auto chave = conexao_.ChavePrimaria(tabela).colunas;
    std::vector<std::string> lidas, condicoes;
    std::vector<TValor> valores;
    for (const auto& [coluna, valor] : pares) {
        lidas.push_back(Lida(coluna, Dialeto(conexao_)));
        const auto tem = [&nome = coluna.nome](const auto& daChave) { return IgualSemCaixa(daChave, nome); };
        const bool daChave = std::ranges::any_of(chave, tem);
        const bool comparavel = !valor.Nulo() && coluna.tipo != TTipoDado::Blob && coluna.tipo != TTipoDado::Memo;
        if (chave.empty() ? !comparavel : !daChave) continue;
        condicoes.push_back(Dialeto(conexao_).Identificador(coluna.nome) + " = :P" + std::to_string(valores.size()));
        valores.push_back(valor);
    }
    TPresenca presenca;
    std::int64_t outras = 0;
    if (condicoes.empty()) return presenca;
    const auto comando =
        conexao_.Prepara("select " + Junta(lidas, ", ") + " from " + tabela + " where " + Junta(condicoes, " and "));
    for (std::size_t i = 0; i < valores.size(); ++i) comando->Atribui("P" + std::to_string(i), valores[i]);
    for (comando->Abre(); comando->Proximo();) (Igual(*comando, pares) ? presenca.iguais : outras) += 1;
    presenca.outras = outras > 0 && !chave.empty();
    return presenca;
}

bool TReposicaoDeLinhas::Igual(TComando& linha, const TParesDeColuna& pares) {
    for (std::size_t i = 0; i < pares.size(); ++i) {
        const TValor la = linha.Valor(i);
        const TValor& aqui = pares[i].second;
        if (la.Nulo() != aqui.Nulo()) return false;
        if (!la.Nulo() && !(la == aqui) && la.ComoBytes() != aqui.ComoBytes()) return false;
    }
    return true;
}

void TReposicaoDeLinhas::Insere(const std::string& tabela, const TParesDeColuna& pares) {
    std::vector<TColunaDaCopia> colunas;
    for (const auto& [coluna, valor] : pares) colunas.push_back({coluna, std::nullopt, 0, {}, false});
    const auto comando = conexao_.Prepara(ComandoInsere(tabela, colunas, Dialeto(conexao_)));
    for (std::size_t i = 0; i < pares.size(); ++i) comando->Atribui("P" + std::to_string(i), pares[i].second);
    comando->Executa();
}

/// A mark is on the disk before what it announces is done.
void TReposicaoDeLinhas::Marca(const std::string& nome, std::string_view estado, std::string_view motivo) {
    TSaidaEmArquivo saida(AbreEmLinhaNova(arquivo_));
    const std::pair<const char*, std::string_view> campos[] = {
        {"{\"marca\": ", estado}, {", \"linha\": ", nome}, {", \"motivo\": ", motivo}};
    for (const auto& [inicio, texto] : campos) {
        saida << inicio;
        EscreveJson(saida, texto);
    }
    saida << ", \"quando\": \"" << FormataDataHora(Agora(), "yyyy-mm-dd hh:mm:ss") << "\"}\n";
    if (!saida.flush().good()) throw std::system_error(errno, std::generic_category(), arquivo_.string());
    LevaAoDisco(arquivo_);
}

}  // namespace

std::filesystem::path ArquivoDeRejeitados(const std::filesystem::path& pasta) {
    return pasta / "AtualizaWKD.rejeitados.jsonl";
}

TArquivo AbreEmLinhaNova(const std::filesystem::path& caminho) {
    TArquivo arquivo = AbreParaAcrescentar(caminho);
    const bool vazio = std::fseek(arquivo.get(), -1, SEEK_END) != 0;
    if (!vazio && std::fgetc(arquivo.get()) != '\n') {
        std::fseek(arquivo.get(), 0, SEEK_END);
        std::fputc('\n', arquivo.get());
    }
    return arquivo;
}

TReposicao RepoeRejeitadas(TConnection& conexao, const std::filesystem::path& pasta, const std::string& alias) {
    return TReposicaoDeLinhas(conexao, pasta, alias).Executa();
}

std::map<std::string, std::int64_t> RejeitadasAbertas(const std::filesystem::path& pasta, const std::string& alias) {
    std::map<std::string, std::int64_t> abertas;
    TArquivoLido(ArquivoDeRejeitados(pasta))
        .CadaAberta(
            alias, [&](const auto&, const TJson& json, const TMarca&) { ++abertas[json.value("tabela", "")]; },
            [](const TJson&) {});
    return abertas;
}

std::vector<TReposicao::TQueFica> ListaRejeitadas(const std::filesystem::path& pasta) {
    std::vector<TReposicao::TQueFica> lista;
    TArquivoLido(ArquivoDeRejeitados(pasta)).CadaLinha([&](const std::string&, const TJson& json) {
        const TJson chave = json.value("chave", TJson::object());
        if (!json.contains("erro") || (chave.empty() && !json.contains("valores"))) return;
        const std::string campo = json.contains("campo") ? json.value("campo", "") + ": " : "";
        const TJson& quem = chave.empty() ? json.at("valores") : chave;  // a table without key: the whole row
        lista.push_back({json.value("tabela", ""), quem.dump(), campo + json.value("erro", "")});
    });
    return lista;
}

}  // namespace wkd
