#!/usr/bin/env ruby
# Reads orders; don't trust "quotes" in comments.
require 'set'
require "json" # a comment
require_relative 'order'

=begin
A block comment: don't worry about "quotes" or 'apostrophes'.
puts "no code" # nor =end here
=end

module Shop
  LIMIT = 1_000 + 0x1F + 0b101 + 0o17 + 017 + 3.14 + 1e10 + 2.5e-3
  RANGE = 1..10

  class Order < Struct.new(:id, :total)
    include Comparable
    attr_reader :lines, :"odd name", :'other name'

    def initialize(id, total = 0.0)
      super
      @lines = []   # it's empty
      @@count ||= 0; $orders = "#{id}"
    end

    def <=>(other)
      total <=> other.total
    end

    def self.parse(text)
      text.split(/\s*["';]\s*/).map { |part| part.strip }
    end

    def empty?
      @lines.empty? ? "none" : 'some'
    end

    def total=(value) @total = value / 2 / 3 end
  end

  def self.report(orders)
    orders.each_with_index do |order, i|
      next if order.nil? or not order.total > 0
      puts "#{i + 1}. \"#{order.id}\" costs #{order.total} # no comment"
      puts "nested #{orders["first"]} quotes and \\"
      puts 'it\'s #{not} interpolated' + 'say "hi"'
    end
  end
end

words = %w(it's a "list" of words)
list = %q[don't] + %Q{say "hi"} + %(plain) + %i<a b>.to_s
ls = `ls "it's" -l`
if line =~ /^#\s*"/ then puts $'; end
case name
when /it's/ then 1
when /"([^"\/]+)"/i, 'x' then 2
else nil
end
half = total / 2; third = total / 3 # "divided"
ok = a/b/c
quote = ?" ; hash = ?# ; apostrophe = ?'
empty = "" + '' + "\\" + '\\'
long = "begins here,
goes on # as text and 'quotes',
ends here"
text = <<HERE
plain text of a here document
HERE
begin
  raise ArgumentError, "bad" unless x && !y
rescue StandardError => e
  warn e.message
  retry
ensure
  yield self if block_given? and defined? super
end
Proc.new { |x, y| [x, y].max }.call(1, 2)
lambda { loop { break } }
hash = { :a => 1, 'b' => 2, c: /re/, "d" => %r{a"b} }
File.open("x") { |f| f.gsub(/'/, '"') }
puts [1, 2].map(&:to_s).join(', ') if true
def self.valid?(x) = x.scan /"a/
def ==(other) = [?", ?'}].include?(other) && other =~ %Q{x #{y} "z"} # "
alias old new
undef old
BEGIN_TIME = Time.now
Predefined = Pre-defined if defined
open = 'never closed
after = 1
=begin
open to the end: "
