#include "tracks/model_host.h"

#include <algorithm>

namespace tracks {

double ModelDescriptor::GetPeriod() {
  log->Add(prefix + "GetPeriod()");
  return script->interval_ms;
}

std::string ModelDescriptor::GetName(int size) {
  log->Add(prefix + "GetName(" + std::to_string(size) + ")");
  return script->path.substr(0, static_cast<std::size_t>(size) - 1);
}

void ModelDescriptor::SetLength(int length) {
  log->Add(prefix + "SetLength(" + std::to_string(length) + ")");
}

void ModelDescriptor::SetPeriod(double interval_ms) {
  log->Add(prefix + "SetPeriod(" + support::Text(interval_ms) + ")");
}

void ModelDescriptor::SetRange(double fullScale) {
  log->Add(prefix + "SetRange(" + support::Text(fullScale) + ")");
}

void ModelDescriptor::SetUnits(const std::string& units) {
  log->Add(prefix + "SetUnits(\"" + units + "\")");
}

void ModelDescriptor::Release() { log->Add(prefix + "Release()"); }

reference::Descriptor* ModelSource::GetDescriptor() {
  log->Add(name + ".GetDescriptor()");
  return &descriptors.emplace_back(name, *log, script);
}

int ModelSource::TransmitNow(float* buffer, int count) {
  log->Add(name + ".TransmitNow(" + std::to_string(count) + ")");
  const int possible = std::clamp(count, 0, Remaining());
  const int written = script.deliver ? std::clamp(script.deliver(count), 0, possible) : possible;
  std::copy_n(script.samples.begin() + position, written, buffer);
  position += written;
  return script.claim ? script.claim(count, written) : written;
}

void ModelSource::Dispose() { log->Add(name + ".Dispose()"); }

bool ModelSource::EndOfSrc() {
  log->Add(name + ".EndOfSrc()");
  return script.end ? script.end(Remaining()) : Remaining() == 0;
}

void ModelSource::Release() { log->Add(name + ".Release()"); }

void ModelStream::AddRef() { log->Add(prefix + "AddRef()"); }

void ModelStream::Release() { log->Add(prefix + "Release()"); }

bool ModelStream::Open(const std::string& name) {
  log->Add(prefix + "Open(\"" + name + "\")");
  const auto found = files.find(name);
  text.Take(found == files.end() ? "" : found->second);
  return found != files.end();
}

bool ModelStream::GetSingle(float& value) {
  log->Add(prefix + "GetSingle()");
  return text.GetSingle(value);
}

bool ModelStream::GetDouble(double& value) {
  log->Add(prefix + "GetDouble()");
  return text.GetDouble(value);
}

bool ModelStream::GetLine() {
  log->Add(prefix + "GetLine()");
  return text.GetLine();
}

void ModelStream::Close() {
  log->Add(prefix + "Close()");
  text.Take("");
}

}  // namespace tracks
