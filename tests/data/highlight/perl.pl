#!/usr/bin/perl -w
# Summarises the log of a web server; don't run it as "root".
use strict;
use warnings;

my $file = shift @ARGV or die "usage: $0 FILE\n";
my @lines = ();
my %hits;   # by address
my ($total, $bytes) = (0, 0x1F);
my $count = $#lines;            # no comment inside the variable's name
my $last = $#{$hits{list}};     # nor here
my $price = '$5 is not a variable, @home neither';
my $mail = "user\@example.org wrote \"$price\" to @lines[0..2] at $hits{now}";
my $path = 'C:\\temp\\it\'s';
my $mixed = "it's # no comment";
my $other = 'say "hi" # no comment';
my $empty = "" . '' . "\\";
my $long = "first line of $file,
second line # still text,
it's the last";
my $single = 'one "line
# and another';

open(LOG, "< $file") || die "can't open $file: $!";
while (my $line = <LOG>) {
    chomp $line;                          # $line = "no code"
    next if $line =~ /^\s*#/;             # comments
    next unless $line =~ m/"GET ([^"]+)"/;
    next if $line !~ /'/;
    $line =~ s/["']//g;
    $line =~ tr/a-z/A-Z/;
    my ($address, $url) = ($1, $2);
    $hits{$address}++;
    $bytes += $3 * 1.5e3 - .5 + 1_000;
    push @lines, $line;
}
close LOG;

sub report {
    my ($title, @rest) = @_;
    print "=== $title ===\n", map { "  $_\n" } @rest;
    return wantarray ? @rest : $#rest;
}

&report("Hits", map { "$_: $hits{$_}" } sort { $hits{$b} <=> $hits{$a} } keys %hits);
&main::show($total && $bytes);
print 'Total: ', $total, "\n" if $total > 10 & 1;
print "Ends in a backslash \\", 'and this too \\', "\$escaped \@escaped $$ $";
local $/ = undef;
local $, = ', ';
local $" = '-';
my $ref = \@lines; my $code = \&report; my $elem = $$ref[0]; my $len = @{$ref};
foreach my $i (0 .. $#$ref) { print $i % 2 ? "odd" : 'even'; }
my @sorted = sort @lines; my $first = $sorted[0]; my $copy = @sorted[1, 2];
my $pattern = "[$first]{2}" . "${first}s and @{$ref}";
my $division = $total / 2 / 3;
printf("%-20s %d%%\n", "it's", 50);
if ($a == $b) { print "equal" } elsif ($a ne 'x') { print 'different' }
exit 0; # the end isn't reached

my $open = "never closed
print $still;
__END__
