#pragma once

#include <string>
#include <vector>

#include "Ensaio.h"
#include "copy/Reposicao.h"
#include "plan/ConfereDicionario.h"
#include "plan/Plano.h"

namespace wkd {

/// The plan for people, as text and as a page, and for programs (one JSON object).
std::string PlanoEmTexto(const TPlano& plano);
std::string PlanoEmHtml(const TPlano& plano);
std::string PlanoEmJson(const TPlano& plano);
/// Its statements, each ended by ";", as a file that the server's own tool reads. What only the program does without
/// losing rows, a rebuild, stands there as a comment.
std::string PlanoEmSql(const TPlano& plano);

/// The differences for people, a line each by table, and for programs (one JSON object).
std::string DesviosEmTexto(const std::string& alias, const std::vector<TDesvio>& desvios);
/// What became of the rejected rows, for people.
std::string ReposicaoEmTexto(const TReposicao& reposicao);
std::string DesviosEmJson(const std::string& alias, const std::vector<TDesvio>& desvios);

/// A rehearsal for people and for programs (one JSON object).
std::string EnsaioEmTexto(const TEnsaio& ensaio);
std::string EnsaioEmJson(const TEnsaio& ensaio);

}  // namespace wkd
