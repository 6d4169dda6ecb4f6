// SPDX-License-Identifier: MIT
class Host {
 public:
  virtual ~Host() = default;
  virtual Files& files() = 0;
  virtual Files& otherFiles() { return files(); }  // denied
  virtual Alerts& alerts();                        // denied
};
